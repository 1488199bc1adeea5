#include "packager/content/program_folder.h"

namespace quillory::pack {

Target nativeTarget() { return Target::kMacOS; }

}  // namespace quillory::pack
