// The tables of names in the native libraries of a runtime, which only debuggers and crash reports
// read: a sixth of a JVM's library. The line numbers of Java are somewhere else, and stay.
#pragma once
#include <string>

namespace quillory::pack {

/// Takes them out of the programs and libraries in `javaHome` with the system's tool strip. False
/// where there is none; a file that it does not know stays as it is. What is exported stays.
bool stripNativeSymbols(const std::string& javaHome);

}  // namespace quillory::pack
