// Issues a release list anew, so that installations see that somebody is there.
#pragma once
#include "packager/commands/command.h"

namespace quillory::pack {

/// "refresh": the same release, under the next number, good for as long as a new one.
Command refreshCommand();

}  // namespace quillory::pack
