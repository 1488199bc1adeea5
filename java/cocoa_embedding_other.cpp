#include "java/cocoa_embedding.h"

namespace quillory {

void letToolkitTakeOver() {}

}  // namespace quillory
