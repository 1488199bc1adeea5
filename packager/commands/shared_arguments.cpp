#include "packager/commands/shared_arguments.h"

#include "packager/reading/target.h"

namespace quillory::pack {

Argument configArgument(std::string& path) {
  return {.name = "CONFIG", .description = "the configuration", .into = &path};
}

Argument compressionOption(std::optional<int>& level) {
  return {.name = "--compression",
          .description = "0 (fast) to 9 (small)",
          .into = &level,
          .numberRange = {{0, 9}}};
}

Argument targetOption(std::string& name) {
  return {.name = "--target",
          .description = "the system that it is for, instead of this one",
          .into = &name,
          .choices = targetNames()};
}

Argument noCacheOption(bool& isWithout) {
  return {.name = "--no-cache",
          .description = "make everything anew, and keep nothing for the next time",
          .into = &isWithout};
}

}  // namespace quillory::pack
