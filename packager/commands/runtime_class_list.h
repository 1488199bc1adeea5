// The list of classes that a runtime is packed with: what an installation's archive of Java's
// classes is made of, so that those which the application needs are mapped and not loaded.
#pragma once
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/content/content_tree.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

/// The file that the configuration asks for; "" for none. With "auto" it is the list that training
/// has left beside the configuration, else the one that comes with us for the toolkit of `jars`.
std::string chosenClassList(const Config& config, const std::vector<std::string>& jars);

/// Puts the classes of that file which the runtime at `javaHome` has behind those of its own list,
/// in its content, and says so. A runtime without a list of its own stays as it is. Throws
/// RejectedInput when the file is not there or names no class, PackError when it cannot be read.
void addClassList(const Config& config, const std::vector<std::string>& jars,
                  const std::string& javaHome, ContentTree& runtime, Reporter& reporter);

}  // namespace quillory::pack
