// Paths and the URLs of files.
#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quillory {

/// The absolute path that a "file:" URL names on this machine, with its escapes undone; nothing for
/// any other text, a file of another machine, and a path that a file cannot have.
std::optional<std::string> pathOfFileUrl(std::string_view url);

/// "file://" and the absolute path, with every byte escaped that a URL cannot hold.
std::string fileUrlOf(std::string_view path);

}  // namespace quillory
