#include "packager/content/app_image_application.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "packager/bytes/byte_sinks.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAppFolder = "$APPDIR/";
// Where images are made, from the folder of a build.
constexpr const char* kImageFolders[] = {"", "build/jpackage", "dist", "out", "target"};
constexpr std::size_t kLongestSettings = 1 << 20;

// Of an image for Linux and of one for macOS.
struct ImageShape {
  const char* application;
  const char* runtime;
};
constexpr ImageShape kShapes[] = {{"lib/app", "lib/runtime"},
                                  {"Contents/app", "Contents/runtime/Contents/Home"}};

// The configuration of the image's own name, or the first; "" for none.
std::string settingsFileIn(const fs::path& application, const std::string& image) {
  std::string first;
  for (const std::string& name : namesIn(application.string())) {
    if (fs::path(name).extension() == ".cfg") {
      if (fs::path(name).stem() == image) {
        return name;
      }
      first = first.empty() ? name : first;
    }
  }
  return first;
}

// Older versions write one line for all jars.
void addJars(const fs::path& application, const std::string& value,
             std::vector<std::string>& jars) {
  std::istringstream paths(value);
  for (std::string path; std::getline(paths, path, ':');) {
    if (path.starts_with(kAppFolder)) {
      path = path.substr(kAppFolder.size());
      if (isFile((application / path).string())) {
        jars.push_back(path);
      }
    }
  }
}

// "java.base java.desktop" of the runtime's release file.
std::vector<std::string> modulesOf(const fs::path& runtime) {
  const std::string path = (runtime / "release").string();
  constexpr std::string_view kKey = "\nMODULES=\"";
  const std::string text = isFile(path) ? '\n' + readBeginningOf(path, kLongestSettings) : "";
  const std::size_t at = text.find(kKey);
  if (at == std::string::npos) {
    return {};
  }
  const std::string behind = text.substr(at + kKey.size());
  std::istringstream words(behind.substr(0, behind.find('"')));
  std::vector<std::string> modules;
  for (std::string module; words >> module;) {
    modules.push_back(module);
  }
  return modules;
}

// `place` is the image, from the folder that is looked into; "" when it is the folder itself.
std::optional<FoundApplication> imageIn(const std::string& folder, const std::string& place,
                                        const ImageShape& shape) {
  const fs::path image = fs::absolute(fs::path(folder) / place).lexically_normal();
  const fs::path application = image / shape.application;
  const std::string imageName =
      (image.has_filename() ? image : image.parent_path()).stem().string();
  const std::string file = settingsFileIn(application, imageName);
  if (file.empty()) {
    return std::nullopt;
  }
  FoundApplication found{.name = fs::path(file).stem().string(),
                         .root = (place.empty() ? "" : place + '/') + shape.application};
  for (const auto& [key, value] :
       appImageSettings(readBeginningOf((application / file).string(), kLongestSettings))) {
    if (key == "app.classpath" || key == "app.mainjar") {
      addJars(application, value, found.jars);
    } else if (key == "app.mainclass") {
      found.mainClass = value;
      std::replace(found.mainClass.begin(), found.mainClass.end(), '/', '.');
    } else if (key == "app.version") {
      found.displayVersion = value;
    } else if (key == "java-options") {
      found.jvmOptions.push_back(value);
    } else if (key == "arguments") {
      found.arguments.push_back(value);
    }
  }
  if (found.jars.empty() || found.mainClass.empty()) {
    return std::nullopt;
  }
  found.modules = modulesOf(image / shape.runtime);
  const std::string icon = (place.empty() ? "" : place + '/') + "lib/" + found.name + ".png";
  found.icon = isFile(folder + '/' + icon) ? icon : "";
  found.reasons = {found.root + ", of an application that jpackage has made: packed as it lies",
                   "main class, class path and options: from its " + file};
  if (!found.modules.empty()) {
    found.reasons.push_back("modules: those of its runtime, which has no program java of its own");
  }
  return found;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> appImageSettings(std::string_view text) {
  std::vector<std::pair<std::string, std::string>> settings;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
    const std::size_t equals = line.find('=');
    if (equals != std::string::npos && line[0] != '[' && line[0] != '#') {
      settings.emplace_back(line.substr(0, equals), line.substr(equals + 1));
    }
  }
  return settings;
}

std::optional<FoundApplication> findAppImage(const std::string& folder) {
  std::vector<std::string> places = {""};
  for (const char* inside : kImageFolders) {
    for (const std::string& name : namesIn((fs::path(folder) / inside).string())) {
      places.push_back(*inside == '\0' ? name : std::string(inside) + '/' + name);
    }
  }
  for (const std::string& place : places) {
    for (const ImageShape& shape : kShapes) {
      if (fs::is_directory(fs::path(folder) / place / shape.application)) {
        if (std::optional<FoundApplication> found = imageIn(folder, place, shape)) {
          return found;
        }
      }
    }
  }
  return std::nullopt;
}

}  // namespace quillory::pack
