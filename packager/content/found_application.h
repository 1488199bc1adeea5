// An application as build tools and packagers leave it in a folder: what is known of it without
// asking anybody.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

/// Paths are from the folder that was looked into.
struct FoundApplication {
  std::string name{};               ///< of a file or folder, as it is called there
  std::string displayVersion{};     ///< "" where nobody says it
  std::string mainClass{};          ///< "" where nobody says it
  std::string root{};               ///< a folder that is packed as it lies; "" for none
  std::vector<std::string> jars{};  ///< the class path; from `root` where there is one
  std::vector<std::string>
      files{};           ///< which jars, or the folder lib/ of theirs, expect beside them
  std::string layout{};  ///< "beside" where the jars lie beside the files; "" for lib/
  /// Native libraries that lie beside the jars, by patterns.
  std::vector<std::string> nativeLibraries{};
  std::vector<std::string> arguments{};
  std::vector<std::string> jvmOptions{};  ///< as a command line of Java has them
  std::vector<std::string> modules{};     ///< of its runtime; empty where jdeps has to find them
  std::string icon{};                     ///< "" for none
  std::vector<std::string> reasons{};     ///< what was chosen and why, a line each
};

}  // namespace quillory::pack
