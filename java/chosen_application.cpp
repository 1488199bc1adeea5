#include "java/chosen_application.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/launch_file.h"
#include "formats/launch_file_format.h"
#include "formats/record_stream.h"
#include "install/install_locations.h"
#include "install/version_folders.h"
#include "java/library_path.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/paths.h"

namespace quillory {
namespace {

using Texts = std::vector<std::string>;

constexpr char kApplicationOption[] = "-Dquillory.application=";
constexpr std::string_view kPassedOverOption = "-Dquillory.passed.over=";
constexpr std::string_view kLibraryPathOption = "-Djava.library.path=";
/// Options that are for the updater.
constexpr std::string_view kOwnPrefix = "-Dquillory.";
constexpr char kNativeFolder[] = "native";

/// Names of folders, which hold no '/'.
Texts passedOver(const Texts& options) {
  Texts names;
  for (const std::string& option : options) {
    if (!option.starts_with(kPassedOverOption)) continue;
    std::string_view rest = std::string_view(option).substr(kPassedOverOption.size());
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('/'), rest.size());
      names.emplace_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  return names;
}

/// Those that are not for the updater, and where its native libraries are.
Texts optionsOf(const std::string& folder, const Texts& given) {
  Texts options;
  bool hasLibraryPath = false;
  for (const std::string& option : given) {
    if (option.starts_with(kOwnPrefix)) continue;
    hasLibraryPath |= option.starts_with(kLibraryPathOption);
    options.push_back(option);
  }
  const std::string libraries = joinPath(folder, kNativeFolder);
  if (!hasLibraryPath && isFolder(libraries))
    options.push_back(std::string(kLibraryPathOption) + libraries + ':' + standardLibraryPath());
  return options;
}

/// The application's jars: on the class path, or, with the module of its main class, on the module
/// path.
void addClasses(const std::string& folder, const Texts& paths, const Texts& given, Texts& options,
                LaunchCommand& command) {
  const auto module = std::find_if(given.begin(), given.end(), [](const std::string& option) {
    return option.starts_with(kModuleOption);
  });
  if (module == given.end()) {
    setClassPath(folder, paths, command);
    return;
  }
  LaunchCommand modules;
  setClassPath(folder, paths, modules);
  options.push_back("--module-path=" + modules.classPathText);
  options.push_back("--add-modules=" + module->substr(std::string_view(kModuleOption).size()));
}

/// What a JVM cannot be told, because it is to be there before it.
void noteSurroundings(const std::string& folder, const Texts& given, LaunchCommand& command) {
  for (const std::string& option : given) {
    constexpr std::string_view kVariable = kEnvironmentOption;
    const std::size_t equals = option.find('=');
    if (option.starts_with(kVariable) && equals != std::string::npos && equals > kVariable.size())
      command.environment.push_back(option.substr(kVariable.size()));
    constexpr std::string_view kDirectory = kDirectoryOption;
    if (!option.starts_with(kDirectory)) continue;
    const std::string policy = option.substr(kDirectory.size());
    if (policy == "application") command.directory = folder;
    if (policy == "home") command.directory = homeFolderOfUser();
  }
}

void insertOptions(const Texts& options, LaunchCommand& command) {
  const auto place =
      command.jvmOptions.begin() + static_cast<std::ptrdiff_t>(command.memoryOptionCount);
  command.jvmOptions.insert(place, options.begin(), options.end());
}

}  // namespace

ChosenApplication addChosenApplication(const std::string& masterFolder, const std::string& appName,
                                       LaunchCommand& command) {
  const std::optional<std::string> name =
      newestVersionFolder(masterFolder, appName, passedOver(command.jvmOptions));
  const std::string folder = name ? joinPath(masterFolder, *name) : "";
  const OwnedFile file(name ? std::fopen(joinPath(folder, kLaunchFileName).c_str(), "rb")
                            : nullptr);
  if (!file) {
    insertOptions({kApplicationOption}, command);
    return {};
  }
  const LaunchHeader header = readLaunchHeader(file.get());
  const long entries = readLong(file.get(), kClassPathRecord.name);
  const Texts paths = readLaunchEntries(file.get(), entries, kClassPathRecord.entryName);
  const long arguments = readLong(file.get(), kArgumentsRecord.name);
  readLaunchEntries(file.get(), arguments, kArgumentsRecord.entryName);
  const Texts given = readLaunchOptions(file.get(), header.version);
  noteSurroundings(folder, given, command);
  Texts options = optionsOf(folder, given);
  options.insert(options.begin(), kApplicationOption + folder);
  addClasses(folder, paths, given, options, command);
  insertOptions(options, command);
  const bool wantsArchive =
      std::find(given.begin(), given.end(), kStartupArchiveOption) != given.end();
  return {.folder = folder, .wantsStartupArchive = wantsArchive};
}

}  // namespace quillory
