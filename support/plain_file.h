// Reading files that others may have put in the place of ours: only what is a plain file is opened,
// and a link at the path is not followed.
#pragma once
#include <cstddef>
#include <optional>
#include <string>

#include "support/owned.h"

namespace quillory {

/// The file, open for reading. Null, with errno, when there is none, and for links, folders, pipes
/// and devices, none of which is waited for.
OwnedFile openPlainFile(const std::string& path);

/// The first `most` bytes of it. Nothing when it cannot be opened, or read as far as that.
std::optional<std::string> readPlainFile(const std::string& path, std::size_t most);

}  // namespace quillory
