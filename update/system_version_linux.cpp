#include <gnu/libc-version.h>

#include "update/system_version.h"

namespace quillory::update {

std::string systemVersion() { return gnu_get_libc_version(); }

}  // namespace quillory::update
