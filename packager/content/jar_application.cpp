#include "packager/content/jar_application.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <utility>

#include "packager/bytes/byte_sinks.h"
#include "packager/content/gradle_application.h"
#include "packager/content/jar_reader.h"
#include "packager/content/start_command.h"
#include "packager/report/findings.h"
#include "packager/report/joined.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

struct FoundJar {
  std::string path;  // from the folder that is looked into, or absolute
  std::string mainClass;
};

// Where build tools put jars, and where people keep those of others.
constexpr const char* kJarFolders[] = {
    "", "target", "build/libs", "dist", "out", "lib", "libs", "target/lib", "target/dependency"};
// Of jars that are made beside the one that people start.
constexpr std::array kExtraEndings = {"-sources.", "-javadoc.", "-tests."};
// Of jars that hold those that they need.
constexpr std::array kWholeEndings = {"-jar-with-dependencies", "-all", "-shaded", "-fat", "-uber"};
// Build files, and what stands before the name of a main class there.
constexpr std::pair<const char*, const char*> kBuildFiles[] = {
    {"pom.xml", "<mainClass>"},        {"pom.xml", "<exec.mainClass>"},
    {"build.gradle", "mainClassName"}, {"build.gradle", "mainClass.set("},
    {"build.gradle", "mainClass"},     {"build.gradle.kts", "mainClass.set("},
    {"build.gradle.kts", "mainClass"}, {"build.xml", "\"Main-Class\" value="}};
constexpr std::size_t kLongestBuildFile = 1 << 20;
// Where a bundle has its jars, unless they lie beside the files.
constexpr char kPackedJarFolder[] = "lib";
constexpr char kScriptFolder[] = "bin";

bool isExtra(const std::string& name) {
  return std::any_of(kExtraEndings.begin(), kExtraEndings.end(),
                     [&](const char* ending) { return name.find(ending) != std::string::npos; });
}

// Whether another jar of the folder is this one with more in it, as Maven's and Gradle's plugins
// leave the two beside each other.
bool hasWholeBeside(const std::string& name, const std::vector<std::string>& names) {
  const auto isThere = [&](const std::string& other) {
    return std::find(names.begin(), names.end(), other) != names.end();
  };
  const std::string stem = fs::path(name).stem().string();
  return std::any_of(kWholeEndings.begin(), kWholeEndings.end(),
                     [&](const char* ending) { return isThere(stem + ending + ".jar"); }) ||
         (name.starts_with("original-") && isThere(name.substr(9)));
}

// Whether a path leads to one of them by another name, as links to versions do.
bool isOneOf(const std::string& folder, const std::vector<FoundJar>& jars, const fs::path& path) {
  return std::any_of(jars.begin(), jars.end(), [&](const FoundJar& jar) {
    return fs::equivalent(fs::path(folder) / jar.path, path);
  });
}

bool hasNameOf(const std::vector<FoundJar>& jars, const std::string& name) {
  return std::any_of(jars.begin(), jars.end(),
                     [&](const FoundJar& jar) { return fs::path(jar.path).filename() == name; });
}

std::vector<FoundJar> jarsIn(const std::string& folder) {
  std::vector<FoundJar> found;
  for (const char* inside : kJarFolders) {
    const fs::path place = fs::path(folder) / inside;
    const std::vector<std::string> names = namesIn(place.string());
    for (const std::string& name : names) {
      // The same name twice would be one path in the bundle: build tools copy jars around. A ":"
      // separates the entries of a class path.
      if (fs::path(name).extension() != ".jar" || isExtra(name) || hasWholeBeside(name, names) ||
          hasNameOf(found, name) || name.find(':') != std::string::npos) {
        continue;
      }
      const std::string path = *inside == '\0' ? name : std::string(inside) + '/' + name;
      if (!isFile((place / name).string()) || isOneOf(folder, found, place / name)) {
        continue;
      }
      try {
        found.push_back({path, Jar((place / name).string()).mainClass()});
      } catch (const PackError&) {
        // Not a jar, whatever its name says.
      }
    }
  }
  // What can be started comes first on the class path.
  std::stable_partition(found.begin(), found.end(),
                        [](const FoundJar& jar) { return !jar.mainClass.empty(); });
  return found;
}

// "lib/a.jar", "../share/a%20b.jar" or "file:///usr/share/java/a.jar" of a manifest as a path.
std::string pathOfUrl(std::string url) {
  if (url.starts_with("file:")) {
    url.erase(0, url.starts_with("file://") ? 7 : 5);
  }
  std::string path;
  for (std::size_t i = 0; i < url.size(); ++i) {
    unsigned byte = 0;
    std::istringstream digits(url.substr(i + 1, 2));
    if (url[i] == '%' && digits.str().size() == 2 && digits >> std::hex >> byte) {
      path += static_cast<char>(byte);
      i += 2;
    } else {
      path += url[i];
    }
  }
  return path;
}

// Adds what the manifests of jars name on their class path, and what is named there, and so on, as
// far as it is there and no jar of that name was found: a bundle has no other place for it.
std::size_t followClassPaths(const std::string& folder, std::vector<FoundJar>& jars) {
  const std::size_t known = jars.size();
  for (std::size_t i = 0; i < jars.size(); ++i) {
    const fs::path jar = fs::path(folder) / jars[i].path;
    std::istringstream urls(Jar(jar.string()).manifestValue("Class-Path"));
    for (std::string url; urls >> url;) {
      const fs::path named = (jar.parent_path() / pathOfUrl(url)).lexically_normal();
      const std::string name = named.filename().string();
      if (!isFile(named.string()) || hasNameOf(jars, name) || name.find(':') != std::string::npos) {
        continue;
      }
      try {
        const Jar other(named.string());
      } catch (const PackError&) {
        continue;
      }
      const fs::path inside = named.lexically_relative(fs::path(folder).lexically_normal());
      const bool isInside = !inside.empty() && *inside.begin() != "..";
      jars.push_back({isInside ? inside.string() : fs::absolute(named).string(), ""});
    }
  }
  return jars.size() - known;
}

// The name of a class that comes next: letters, digits and dots between anything else.
std::string nextClassName(const std::string& text, std::size_t at) {
  constexpr std::string_view kOfNames =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_$.";
  const std::size_t start = text.find_first_of(kOfNames, at);
  return start == std::string::npos
             ? ""
             : text.substr(start, text.find_first_not_of(kOfNames, start) - start);
}

// The main class that a build file names, and that file, where one of the jars has that class.
std::pair<std::string, std::string> mainClassOfBuild(const std::string& folder,
                                                     const std::vector<FoundJar>& jars) {
  for (const auto& [file, key] : kBuildFiles) {
    const std::string path = folder + '/' + file;
    const std::string text = isFile(path) ? readBeginningOf(path, kLongestBuildFile) : "";
    const std::string_view word = key;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
      const std::string name = nextClassName(text, at + word.size());
      if (std::any_of(jars.begin(), jars.end(), [&](const FoundJar& jar) {
            return Jar((fs::path(folder) / jar.path).string()).hasClass(name);
          })) {
        return {name, file};
      }
    }
  }
  return {};
}

struct FoundCommand {
  std::string script;  // from the folder that is looked into
  StartCommand command;
  std::size_t jar = 0;  // which one has the main class
};

// The jar that has a class, or that is called so; their number for none.
std::size_t jarOf(const std::string& started, const std::string& folder,
                  const std::vector<FoundJar>& jars) {
  const auto found = std::find_if(jars.begin(), jars.end(), [&](const FoundJar& jar) {
    if (started.ends_with(".jar")) {
      return !jar.mainClass.empty() &&
             fs::path(jar.path).filename() == fs::path(started).filename();
    }
    return Jar((fs::path(folder) / jar.path).string()).hasClass(started);
  });
  return static_cast<std::size_t>(found - jars.begin());
}

// What a script beside the jars, or in bin/, starts of them.
std::optional<FoundCommand> commandOfScript(const std::string& folder,
                                            const std::vector<FoundJar>& jars) {
  for (const std::string inside : {"bin/", ""}) {
    for (const std::string& name : namesIn((fs::path(folder) / inside).string())) {
      const std::string path = (fs::path(folder) / inside / name).string();
      const std::string ending = fs::path(name).extension().string();
      // At the top lies everything: what is a script says its name.
      if (ending == ".jar" || ending == ".bat" || (inside.empty() && ending != ".sh") ||
          !isFile(path)) {
        continue;
      }
      const std::string text = readBeginningOf(path, kLongestBuildFile);
      if (!text.starts_with("#!")) {
        continue;
      }
      std::optional<StartCommand> command = readStartCommand(text, [&](const std::string& started) {
        return jarOf(started, folder, jars) < jars.size();
      });
      if (command) {
        const std::size_t jar = jarOf(command->started, folder, jars);
        // Gradle's scripts keep options in a variable.
        const std::vector<std::string> more = readStartScript(text).jvmOptions;
        command->options.insert(command->options.end(), more.begin(), more.end());
        return FoundCommand{inside + name, std::move(*command), jar};
      }
    }
  }
  return std::nullopt;
}

// Whether somebody builds something here: what lies beside a jar is not only what it needs then.
bool isSourceFolder(const std::string& folder) {
  constexpr const char* kSigns[] = {"src", "pom.xml", "build.gradle", "build.gradle.kts",
                                    "build.xml"};
  return std::any_of(std::begin(kSigns), std::end(kSigns),
                     [&](const char* sign) { return fs::exists(fs::path(folder) / sign); });
}

// The folders beside a jar that is ready to run, or beside the lib/ that it lies in, where the
// application expects them. Its scripts stay behind: the launcher starts it.
std::vector<std::string> foldersBeside(const std::string& folder, const FoundJar& jar) {
  std::vector<std::string> beside;
  const fs::path place = fs::path(jar.path).parent_path();
  if ((!place.empty() && place != kPackedJarFolder) || jar.mainClass.empty()) {
    return beside;
  }
  for (const std::string& name : namesIn(folder)) {
    const bool isForJars =
        std::find(std::begin(kJarFolders), std::end(kJarFolders), name) != std::end(kJarFolders);
    if (!name.starts_with('.') && !isForJars && fs::is_directory(fs::path(folder) / name) &&
        fs::path(name).extension() != ".app" && (place.empty() || name != kScriptFolder)) {
      beside.push_back(name);
    }
  }
  return beside;
}

// Patterns of the native libraries beside jars, where else nothing but jars is packed; those of
// each system, whichever it was made for.
std::vector<std::string> nativeLibrariesIn(const std::string& folder) {
  std::vector<std::string> patterns;
  for (const std::string inside : {"", "lib/"}) {
    const std::vector<std::string> names = namesIn((fs::path(folder) / inside).string());
    for (const char* ending : {".so", ".jnilib", ".dylib"}) {
      if (std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return fs::path(name).extension() == ending;
          })) {
        patterns.push_back(inside + "*" + ending);
      }
    }
  }
  return patterns;
}

// What the folder is called counts where several jars can be started: those of others lie here,
// too.
void preferNameOfFolder(const std::string& folder, std::vector<FoundJar>& jars) {
  const fs::path place = fs::absolute(folder).lexically_normal();
  const std::string name = (place.has_filename() ? place : place.parent_path()).filename().string();
  const auto isNamesake = [&](const FoundJar& jar) {
    return !jar.mainClass.empty() && !name.empty() &&
           fs::path(jar.path).filename().string().starts_with(name);
  };
  std::stable_partition(jars.begin(), jars.end(), isNamesake);
}

void setMainClass(const std::string& folder, const std::vector<FoundJar>& jars,
                  FoundApplication& found) {
  found.mainClass = jars[0].mainClass;
  if (!found.mainClass.empty()) {
    found.reasons.push_back("main class: from the manifest of " + jars[0].path);
    return;
  }
  const auto [mainClass, file] = mainClassOfBuild(folder, jars);
  found.mainClass = mainClass;
  if (!mainClass.empty()) {
    found.reasons.push_back("main class: from " + file);
  }
}

// The jar of the command becomes the first one.
void followScript(const FoundCommand& script, std::vector<FoundJar>& jars,
                  FoundApplication& found) {
  const auto main = jars.begin() + static_cast<std::ptrdiff_t>(script.jar);
  if (!script.command.started.ends_with(".jar")) {
    main->mainClass = script.command.started;
  }
  std::rotate(jars.begin(), main, main + 1);
  found.mainClass = jars[0].mainClass;
  found.jvmOptions = script.command.options;
  found.arguments = script.command.arguments;
  found.reasons.push_back("main class, options and arguments: from the script " + script.script);
}

}  // namespace

std::optional<FoundApplication> findJarApplication(const std::string& folder) {
  std::vector<FoundJar> jars = jarsIn(folder);
  if (jars.empty()) {
    return std::nullopt;
  }
  FoundApplication found;
  const bool isFinished = !isSourceFolder(folder);
  const std::optional<FoundCommand> script =
      isFinished ? commandOfScript(folder, jars) : std::nullopt;
  if (script) {
    followScript(*script, jars, found);
  } else {
    preferNameOfFolder(folder, jars);
    setMainClass(folder, jars, found);
  }
  found.name = fs::path(jars[0].path).stem().string();
  const bool isBeside = !fs::path(jars[0].path).has_parent_path();
  if (isFinished) {
    found.files = foldersBeside(folder, jars[0]);
    found.layout = isBeside && !found.files.empty() ? "beside" : "";
    found.nativeLibraries = nativeLibrariesIn(folder);
  }
  const std::size_t followed = followClassPaths(folder, jars);
  if (followed != 0) {
    found.reasons.push_back(std::to_string(followed) +
                            " of the jars: from the class path in a manifest");
  }
  if (!found.files.empty()) {
    found.reasons.push_back("the folders beside " + (isBeside ? jars[0].path : "lib/") +
                            ": packed beside it, as it is ready to run");
  }
  if (!found.nativeLibraries.empty()) {
    found.reasons.push_back("native libraries: " + joined(found.nativeLibraries, ", "));
  }
  for (const FoundJar& jar : jars) {
    found.jars.push_back(jar.path);
  }
  return found;
}

}  // namespace quillory::pack
