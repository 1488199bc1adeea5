#include "packager/content/program_folder.h"

namespace quillory::pack {

Target nativeTarget() { return Target::kLinux; }

}  // namespace quillory::pack
