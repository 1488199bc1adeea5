#include "platform/gnustep/folder_bundle.h"

#include <dlfcn.h>

#include <filesystem>
#include <system_error>

#include "platform/gnustep/info_plist.h"

namespace quillory::platform {
namespace {

std::string executableName(const std::filesystem::path& folder) {
  const std::string name = textsOfInfoPlist(infoPlistIn(folder / "Contents"))["CFBundleExecutable"];
  return name.empty() ? folder.stem().string() : name;
}

}  // namespace

FolderBundle* openFolderBundle(const std::string& folder) {
  const std::filesystem::path path = folder;
  std::error_code unknown;
  if (!std::filesystem::is_directory(path, unknown)) return nullptr;
  return new FolderBundle{path / "Contents/MacOS" / executableName(path)};
}

bool loadFolderBundle(const FolderBundle& bundle, std::string& reason) {
  if (dlopen(bundle.executable.c_str(), RTLD_LAZY | RTLD_GLOBAL) != nullptr) return true;
  const char* text = dlerror();
  reason = text == nullptr ? "" : text;
  return false;
}

}  // namespace quillory::platform
