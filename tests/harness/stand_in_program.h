// Small shell scripts in the place of programs, which keep the arguments that they get.
#pragma once
#include <sys/stat.h>

#include <string>
#include <vector>

#include "tests/harness/temp_dir.h"

namespace quillory::testing {

inline void writeProgram(const std::string& path, const std::string& script) {
  writeFile(path, script);
  chmod(path.c_str(), 0755);
}

/// A program that keeps its arguments in the file `record`, behind what is there, and then goes on
/// with the script `then`.
inline void writeRecorder(const std::string& path, const std::string& record,
                          const std::string& then = "") {
  writeProgram(path, "#!/bin/sh\nprintf '%s\\0' \"$@\" >>'" + record + "'\n" + then + "\n");
}

/// What such a program kept, byte for byte.
inline std::vector<std::string> recordedIn(const std::string& record) {
  const std::string bytes = readFile(record);
  std::vector<std::string> arguments;
  for (std::size_t begin = 0, end = 0; (end = bytes.find('\0', begin)) != bytes.npos;
       begin = end + 1)
    arguments.push_back(bytes.substr(begin, end - begin));
  return arguments;
}

}  // namespace quillory::testing
