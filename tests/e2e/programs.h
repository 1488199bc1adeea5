// The programs under test: those of this build, or the ones that the environment names instead,
// such as the macOS executables (tests/macos). Each by the name of the variable.
#pragma once
#include <cstdlib>
#include <string>

namespace quillory::testing {

inline std::string programUnderTest(const char* variable, const char* built) {
  const char* const other = std::getenv(variable);
  return other == nullptr ? built : other;
}

inline std::string launcherUnderTest() {
  return programUnderTest("QUILLORY_LAUNCHER", QUILLORY_LAUNCHER);
}

inline std::string lzma64UnderTest() {
  return programUnderTest("QUILLORY_LZMA64", QUILLORY_LZMA64);
}

inline std::string elevMacUnderTest() {
  return programUnderTest("QUILLORY_ELEV_MAC", QUILLORY_ELEV_MAC);
}

/// Whether the launcher under test is the one for macOS, whose ways differ here and there.
inline bool isForMacOS() { return std::getenv("QUILLORY_LAUNCHER") != nullptr; }

}  // namespace quillory::testing
