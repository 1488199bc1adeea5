#include "packager/content/gradle_application.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string_view>

#include "packager/bytes/byte_sinks.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr char kInstallations[] = "build/install";
constexpr std::string_view kHome = "$APP_HOME/";

// What stands between `start` and the end of its line, without the quotes around it.
std::string restOfLine(const std::string& text, const std::string& start) {
  const std::size_t at = text.find('\n' + start);
  if (at == std::string::npos) {
    return "";
  }
  const std::size_t from = at + 1 + start.size();
  std::string rest = text.substr(from, text.find_first_of("\r\n", from) - from);
  if (rest.size() > 1 && (rest.front() == '\'' || rest.front() == '"') &&
      rest.back() == rest.front()) {
    rest = rest.substr(1, rest.size() - 2);
  }
  return rest;
}

std::vector<std::string> parted(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    if (end > at) {
      parts.push_back(text.substr(at, end - at));
    }
    at = end + 1;
  }
  return parts;
}

// "-Xmx64m" "-Dname=value with blanks"
std::vector<std::string> quotedWords(const std::string& text) {
  std::vector<std::string> words;
  for (std::size_t at = text.find('"'); at != std::string::npos; at = text.find('"', at)) {
    const std::size_t end = text.find('"', at + 1);
    if (end == std::string::npos) {
      break;
    }
    words.push_back(text.substr(at + 1, end - at - 1));
    at = end + 1;
  }
  return words;
}

bool isClassName(const std::string& word) {
  return !word.empty() && word.find_first_of("\"'$/\\=-@ ") == std::string::npos;
}

// The word behind the class path that the script hands to Java.
std::string mainClassIn(const std::string& text) {
  for (const std::string_view option :
       {"-classpath \"$CLASSPATH\"", "-classpath \"\\\"$CLASSPATH\\\"\""}) {
    const std::size_t at = text.find(option);
    if (at == std::string::npos) {
      continue;
    }
    const std::size_t start = text.find_first_not_of(" \t\r\n\\", at + option.size());
    if (start != std::string::npos) {
      const std::string word = text.substr(start, text.find_first_of(" \t\r\n", start) - start);
      return isClassName(word) ? word : "";
    }
  }
  return "";
}

// The scripts in bin/, that of the installation's name first; none of those for Windows.
std::vector<std::string> scriptsIn(const fs::path& installation) {
  std::vector<std::string> scripts;
  for (const std::string& name : namesIn((installation / "bin").string())) {
    if (fs::path(name).extension() != ".bat" && isFile((installation / "bin" / name).string())) {
      scripts.push_back(name);
    }
  }
  std::stable_partition(scripts.begin(), scripts.end(),
                        [&](const std::string& name) { return name == installation.filename(); });
  return scripts;
}

std::vector<std::string> installedJars(const fs::path& installation) {
  std::vector<std::string> jars;
  for (const std::string& name : namesIn((installation / "lib").string())) {
    if (fs::path(name).extension() == ".jar" && name.find(':') == std::string::npos) {
      jars.push_back("lib/" + name);
    }
  }
  return jars;
}

// Those of `jars` that the class path has, in its order; all of them where it has none.
std::vector<std::string> onClassPath(std::vector<std::string> jars,
                                     const std::vector<std::string>& classPath) {
  std::vector<std::string> chosen;
  std::copy_if(classPath.begin(), classPath.end(), std::back_inserter(chosen),
               [&](const std::string& jar) {
                 return std::find(jars.begin(), jars.end(), jar) != jars.end();
               });
  return chosen.empty() ? jars : chosen;
}

FoundApplication installedIn(const fs::path& installation, const std::string& root,
                             std::vector<std::string> jars) {
  FoundApplication found{.name = installation.filename().string(), .root = root};
  found.reasons.push_back(root +
                          ", as Gradle's application plugin has installed it: packed as it lies");
  for (const std::string& name : scriptsIn(installation)) {
    StartScript script =
        readStartScript(readBeginningOf((installation / "bin" / name).string(), 1 << 20));
    if (script.mainClass.empty()) {
      continue;
    }
    jars = onClassPath(std::move(jars), script.classPath);
    found.mainClass = script.mainClass;
    found.jvmOptions = script.jvmOptions;
    found.reasons.push_back("main class, class path and options: from its script bin/" + name);
    break;
  }
  found.jars = std::move(jars);
  return found;
}

}  // namespace

StartScript readStartScript(const std::string& text) {
  StartScript script;
  for (const std::string& part : parted(restOfLine(text, "CLASSPATH="), ':')) {
    if (part.starts_with(kHome) && part.find('$', 1) == std::string::npos) {
      script.classPath.push_back(part.substr(kHome.size()));
    }
  }
  script.mainClass = mainClassIn(text);
  script.jvmOptions = quotedWords(restOfLine(text, "DEFAULT_JVM_OPTS="));
  return script;
}

std::optional<FoundApplication> findGradleApplication(const std::string& folder) {
  for (const std::string& name : namesIn(folder + '/' + kInstallations)) {
    const fs::path installation = fs::path(folder) / kInstallations / name;
    std::vector<std::string> jars = installedJars(installation);
    if (!jars.empty()) {
      return installedIn(installation, kInstallations + ('/' + name), std::move(jars));
    }
  }
  return std::nullopt;
}

}  // namespace quillory::pack
