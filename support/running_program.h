// Where the program that runs lies.
#pragma once
#include <string>

namespace quillory {

/// The path of this process's executable file, links resolved; "" when it cannot be told.
std::string runningProgram();

}  // namespace quillory
