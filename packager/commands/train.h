// quillory-pack train: runs an application once, and keeps which classes of Java it needs.
#pragma once
#include <string>
#include <vector>

#include "packager/commands/command.h"
#include "packager/report/reporter.h"

namespace quillory::pack {

struct TrainOptions {
  std::string what = "quillory.toml";  ///< a configuration or a bundle
  /// "": quillory.classlist beside the configuration, or for a bundle where the user is.
  std::string output;
  std::string cache;  ///< of linked runtimes; "" for none
  std::vector<std::string> arguments;
};

/// Runs the application with the runtime that it is packed with, waits for its end, and writes the
/// list that the next bundle's runtime gets. Returns the list's path. Throws RejectedInput when the
/// configuration cannot be packed or has no runtime, and PackError when the run was none to keep; a
/// list of an earlier run stays then.
std::string train(const TrainOptions& options, Reporter& reporter);

Command trainCommand();

}  // namespace quillory::pack
