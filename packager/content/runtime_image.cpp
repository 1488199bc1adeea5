#include "packager/content/runtime_image.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <utility>

#include "packager/bytes/byte_sinks.h"
#include "packager/content/class_list.h"
#include "packager/content/info_plist.h"
#include "packager/content/jar_reader.h"
#include "packager/content/native_symbols.h"
#include "packager/content/program_folder.h"
#include "packager/content/stored_jar.h"
#include "packager/content/stub_jar.h"
#include "packager/content/tool_runner.h"
#include "packager/report/joined.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// Where runtimes and whole JDKs of Java 8 have it on macOS.
constexpr std::array kJvmsOnMacOS = {"/lib/server/libjvm.dylib", "/jre/lib/server/libjvm.dylib"};

// The library that the bundle's executable stands for, in the order of preference.
constexpr std::array kLauncherLibraries = {"lib/jli/libjli.dylib", "lib/libjli.dylib",
                                           "lib/jli/libjli.so", "lib/libjli.so"};

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first == std::string::npos
             ? ""
             : text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// What is no jar, jdeps is to say.
bool isModule(const std::string& jar) {
  try {
    return Jar(jar).isModule();
  } catch (const PackError&) {
    return false;
  }
}

// The jars as a class path sees them. Of a module jdeps wants all that it requires to be modules,
// too, and no other of its name. On a class path neither counts; what the modules of a module path
// require is asked for besides.
std::vector<std::string> withoutDescriptors(std::vector<std::string> jars,
                                            const std::string& workFolder) {
  for (std::size_t i = 0; i < jars.size(); ++i) {
    if (!isModule(jars[i])) {
      continue;
    }
    const std::string folder = workFolder + "/classes/" + std::to_string(i);
    fs::create_directories(folder);
    const std::string copy = folder + '/' + fs::path(jars[i]).filename().string();
    if (storeJarForClassPath(jars[i], copy).empty()) {
      jars[i] = copy;
    }
  }
  return jars;
}

// "java.base,java.desktop" from the last line: warnings come before it.
std::string modulesFoundByJdeps(const RuntimeConfig& config, const std::vector<std::string>& jars) {
  std::vector<std::string> command = jdkToolCommand("jdeps", config.jdk);
  command.insert(command.end(), {"--print-module-deps", "--ignore-missing-deps", "--multi-release",
                                 "base", "--class-path", joined(jars, ":")});
  command.insert(command.end(), jars.begin(), jars.end());
  std::istringstream output(runTool(command));
  std::string modules;
  for (std::string line; std::getline(output, line);) {
    if (!trimmed(line).empty()) {
      modules = trimmed(line);
    }
  }
  if (modules.empty() || modules.find(' ') != std::string::npos) {
    throw PackError("jdeps did not find the modules that the jars need: " + modules,
                    "name them: modules = [\"java.base\", ...] in [runtime]");
  }
  return modules;
}

// What a module requires, used or not: without one of them no JVM begins.
std::string modulesRequiredBy(const std::string& module, const RuntimeConfig& config,
                              const std::vector<std::string>& jars) {
  std::istringstream listed(
      runTool({findJdkTool("java", config.jdk), "--module-path", joined(jars, ":"),
               "--limit-modules", module, "--list-modules"}));
  std::string modules;
  for (std::string line; std::getline(listed, line);) {
    // Those of the jars have a place behind their names, and are not for the runtime.
    if (!trimmed(line).empty() && line.find(' ') == std::string::npos) {
      modules += ',' + line.substr(0, line.find('@'));
    }
  }
  return modules;
}

std::vector<std::string> optionsToLink(const RuntimeConfig& config, const std::string& modules,
                                       const RuntimeOptions& options) {
  std::vector<std::string> all = options.given;
  if (options.asked.empty()) {
    return all;
  }
  const std::string listed =
      runTool({findJdkTool("java", config.jdk), "--limit-modules", modules, "--list-modules"});
  const std::vector<std::string> fitting = optionsAbout(options.asked, modulesListed(listed));
  all.insert(all.end(), fitting.begin(), fitting.end());
  return all;
}

// An option that Java does not know would end every start on the user's machine.
void requireStart(const std::string& home) {
  try {
    runTool({home + "/bin/java", "-version"});
  } catch (const PackError& e) {
    throw PackError(std::string("Java does not start with the options of its runtime: ") + e.what(),
                    "correct jvm.options");
  }
}

// What to do about a runtime of another system.
std::string runtimeAdvice(Target target) {
  const std::string system = systemOf(target);
  return "in [runtime]: folder, with a runtime for " + system +
         ", or jlink with jmods, the folder of that name in a JDK for " + system +
         "; without [runtime] the first start downloads one";
}

// The tools in a JDK that the configuration names: others are looked for when they are run.
void requireTools(const Config& config) {
  const std::string& jdk = config.runtime.jdk;
  if (jdk.empty()) {
    return;
  }
  for (const char* tool : {"jlink", "jdeps"}) {
    const bool isNeeded = tool != std::string("jdeps") || config.runtime.modules.empty();
    const std::string path = jdk + "/bin/" + tool;
    if (isNeeded && access(path.c_str(), X_OK) != 0) {
      throw RejectedInput(
          {{Severity::kError, "missing-file", "there is no program " + path + ": that is no JDK",
            config.placeOf("runtime.jdk"),
            "name the folder of a JDK, which holds bin, or leave out runtime.jdk to "
            "take that of JAVA_HOME or PATH"}});
    }
  }
}

// For tools of other versions of Java, with classes that the image of the runtime has as well:
// stored, they cost next to nothing in an archive of both.
void storeJarOfRuntime(const std::string& folder) {
  const std::string jar = folder + "/lib/jrt-fs.jar";
  const std::string stored = jar + ".stored";
  if (!isFile(jar) || !storeJar(jar, stored).empty()) {
    return;
  }
  fs::permissions(stored, fs::status(jar).permissions());
  fs::rename(stored, jar);
}

// A file by its place, length and time: modules and tools are too large to be read each time.
void addStamp(const std::string& path, CacheKey& key) {
  std::error_code error;
  key.add(path);
  key.add(std::to_string(fs::file_size(path, error)));
  // As nanoseconds: what a library counts by itself may be wider than any number it can print.
  const auto time = fs::last_write_time(path, error).time_since_epoch();
  key.add(std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()));
}

// Everything that a runtime is made of; "" where that cannot be told.
std::string runtimeKey(const RuntimeConfig& config, const std::vector<std::string>& command,
                       const std::string& output) {
  std::error_code error;
  const fs::path jlink = fs::canonical(command.at(0), error);
  const fs::path jdk = jlink.parent_path().parent_path();
  const fs::path modules = config.jmods.empty() ? jdk / "jmods" : fs::path(config.jmods);
  // A value of an option may name a file.
  const bool namesFiles = std::any_of(
      config.jlinkOptions.begin(), config.jlinkOptions.end(),
      [](const std::string& option) { return option.find_first_of("@/") != std::string::npos; });
  if (error || namesFiles || !isFile(modules / "java.base.jmod")) {
    return "";
  }
  CacheKey key("runtime 2");
  for (const std::string& word : command) {
    key.add(word == output ? "" : word);
  }
  for (const fs::path& file :
       {jlink, jdk / "lib/modules", jdk / "release", fs::path(findInPath("strip"))}) {
    addStamp(file.string(), key);
  }
  for (const std::string& name : namesIn(modules.string())) {
    addStamp((modules / name).string(), key);
  }
  return key.hex();
}

}  // namespace

void requireModulesFor(Target target, const Config& config) {
  const std::string& jmods = config.runtime.jmods;
  if (jmods.empty() && target != nativeTarget()) {
    throw RejectedInput({{Severity::kError, "platform",
                          std::string("jlink links the modules of this system, and the bundle is "
                                      "for ") +
                              systemOf(target),
                          config.placeOf("runtime"), runtimeAdvice(target)}});
  }
  if (!jmods.empty() && !isFile(jmods + "/java.base.jmod")) {
    throw RejectedInput({{Severity::kError, "missing-file", jmods + " holds no java.base.jmod",
                          config.placeOf("runtime.jmods"),
                          "name the folder jmods of a JDK: Contents/Home/jmods in one for macOS"}});
  }
  requireTools(config);
}

std::string linkRuntime(const RuntimeConfig& config, const std::vector<std::string>& jars,
                        const std::string& workFolder, const RuntimeOptions& options,
                        PackCache* cache) {
  std::string modules = joined(config.modules, ",");
  if (modules.empty()) {
    modules = modulesFoundByJdeps(config, withoutDescriptors(jars, workFolder));
  }
  if (!config.addModules.empty()) {
    modules += ',' + joined(config.addModules, ",");
  }
  if (!options.module.empty()) {
    modules += modulesRequiredBy(options.module, config, jars);
  }
  const std::string folder = workFolder + "/runtime";
  std::vector<std::string> command = jdkToolCommand("jlink", config.jdk);
  command.insert(command.end(), {"--add-modules", modules, "--no-header-files", "--no-man-pages",
                                 "--output", folder});
  if (!config.jmods.empty()) {
    command.insert(command.end(), {"--module-path", config.jmods});
  }
  const std::vector<std::string> toLink = optionsToLink(config, modules, options);
  if (!toLink.empty()) {
    // jlink takes a value that begins with "--" for another option.
    command.push_back("--add-options= " + optionText(toLink));
  }
  command.insert(command.end(), config.jlinkOptions.begin(), config.jlinkOptions.end());
  const std::string key = cache == nullptr ? "" : runtimeKey(config, command, folder);
  if (key.empty() || !cache->fetchFolder(key, folder)) {
    runTool(command);
    stripNativeSymbols(folder);
    storeJarOfRuntime(folder);
    if (!toLink.empty() && config.jmods.empty()) {
      requireStart(folder);
    }
    if (!key.empty()) {
      cache->keepFolder(key, folder);
    }
  }
  addUpdaterClasses(folder);
  return folder;
}

std::string findJavaHome(const std::string& folder, const Place& place) {
  for (const std::string& home : {folder + "/Contents/Home", folder}) {
    if (isFile(home + "/bin/java")) {
      return home;
    }
  }
  throw RejectedInput(
      {{Severity::kError, "no-java", folder + " has no bin/java: it is no Java runtime", place,
        "name the folder that holds bin and lib, or the bundle around it"}});
}

Findings lintRuntime(const std::string& javaHome, Target target, const std::string& launcher,
                     const Place& place) {
  const std::string java = javaHome + "/bin/java";
  const ProgramImage image = programImageIn(java);
  // A script runs everywhere, as far as anybody can tell.
  if (image.system != kScript) {
    if (std::optional<Finding> flaw = unfitFor(target, {java, place}, image)) {
      flaw->advice = runtimeAdvice(target);
      return {std::move(*flaw)};
    }
  }
  const bool hasJvm = std::any_of(kJvmsOnMacOS.begin(), kJvmsOnMacOS.end(),
                                  [&](const char* name) { return isFile(javaHome + name); });
  if (target == Target::kMacOS && !hasJvm) {
    return {{Severity::kError, "platform",
             "there is no " + javaHome + kJvmsOnMacOS[0] + ": it is no runtime for macOS", place,
             runtimeAdvice(target)}};
  }
  return lintArchitectures(programImageIn(launcher), image, place);
}

std::string versionNumberFor(const std::string& javaVersion) {
  // "1.8.0_202" counts as "8.0.202".
  const std::string text = javaVersion.starts_with("1.") ? javaVersion.substr(2) : javaVersion;
  constexpr std::array<long, 4> kDigits = {1, 100, 1000, 100};
  long number = 0;
  std::size_t at = 0;
  for (const long scale : kDigits) {
    long part = 0;
    for (; at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])); ++at) {
      part = std::min(part * 10 + (text[at] - '0'), 9999L);
    }
    number = number * scale + (scale == 1 ? part : std::min(part, scale - 1));
    if (at < text.size() && (text[at] == '.' || text[at] == '_')) {
      ++at;
    }
  }
  return number == 0 ? "" : std::to_string(number);
}

std::string versionNumberOf(const std::string& javaHome) {
  if (!isFile(javaHome + "/release")) {
    return "";
  }
  const std::string release = '\n' + readWholeFile(javaHome + "/release");
  const std::string key = "\nJAVA_VERSION=\"";
  const std::size_t at = release.find(key);
  if (at == std::string::npos) {
    return "";
  }
  const std::size_t start = at + key.size();
  return versionNumberFor(release.substr(start, release.find('"', start) - start));
}

ContentTree runtimeContent(const std::string& javaHome, const std::string& name,
                           const std::string& version) {
  ContentTree tree("runtime");
  tree.addFolder("Contents");
  tree.addFolderContent(javaHome, "Contents/Home");
  // The launcher makes them when it installs the runtime, for the machine that it is on.
  tree.removeFiles([](const std::string& path) { return path.ends_with(".jsa"); });
  if (!tree.contains("Contents/Home/lib/rt.jar")) {
    tree.addBytes(stubRuntimeJar(), "Contents/Home/lib/rt.jar");
  }
  tree.addFolder("Contents/MacOS");
  std::string library;
  for (const char* candidate : kLauncherLibraries) {
    if (library.empty() && isFile(javaHome + '/' + candidate)) {
      library = fs::path(candidate).filename().string();
      tree.addFile(javaHome + '/' + candidate, "Contents/MacOS/" + library);
      // The launcher links the bundle's executable to lib/jli/libjli.dylib; newer runtimes have
      // that library one folder higher.
      if (library == "libjli.dylib" && !tree.contains("Contents/Home/lib/jli/libjli.dylib")) {
        tree.addFolder("Contents/Home/lib/jli");
        tree.addFile(javaHome + '/' + candidate, "Contents/Home/lib/jli/libjli.dylib");
      }
    }
  }
  tree.addBytes(runtimeInfoPlist(name, version, library), "Contents/Info.plist");
  return tree;
}

}  // namespace quillory::pack
