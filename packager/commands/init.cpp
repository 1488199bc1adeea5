#include "packager/commands/init.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <vector>

#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/config/name_rules.h"
#include "packager/content/jar_reader.h"
#include "packager/report/exit_statuses.h"
#include "support/folder_listing.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

struct FoundJar {
  std::string path;  // from the folder of the configuration
  std::string mainClass;
};

// Where build tools put jars, and where people keep those of others.
constexpr const char* kJarFolders[] = {"",    "target", "build/libs", "dist",
                                       "out", "lib",    "libs",       "target/lib"};

// Of the updater, of the runtime as it is called below, and of tools in the runtime.
constexpr const char* kTakenNames[] = {kUpdaterName, "JRE", "java", "keytool"};
// So that folders named after it, and the bundle, have room for the rest of their names.
constexpr std::size_t kLongestName = 100;

// As `java -jar` takes it: with slashes, too, and with blanks around it.
std::string mainClassOf(const Jar& jar) {
  std::string name = jar.manifestValue("Main-Class");
  name.erase(0, name.find_first_not_of(" \t"));
  name.erase(name.find_last_not_of(" \t") + 1);
  std::replace(name.begin(), name.end(), '/', '.');
  return name;
}

std::vector<FoundJar> findJars(const std::string& folder) {
  std::vector<FoundJar> found;
  for (const char* inside : kJarFolders) {
    const fs::path place = fs::path(folder) / inside;
    for (const std::string& name : namesIn(place)) {
      const bool isExtra = name.find("-sources.") != std::string::npos ||
                           name.find("-javadoc.") != std::string::npos;
      if (fs::path(name).extension() != ".jar" || isExtra) {
        continue;
      }
      // The same name twice would be one path in the bundle: build tools copy jars around.
      const bool isThere = std::any_of(found.begin(), found.end(), [&](const FoundJar& jar) {
        return fs::path(jar.path).filename() == name;
      });
      // A ":" separates the entries of a class path.
      if (isThere || name.find(':') != std::string::npos) {
        continue;
      }
      const std::string path = *inside == '\0' ? name : std::string(inside) + '/' + name;
      try {
        found.push_back({path, mainClassOf(Jar((place / name).string()))});
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

// Up to `most` bytes, and no character of UTF-8 cut through.
std::size_t lengthOfWholeCharacters(const std::string& text, std::size_t most) {
  std::size_t length = std::min(text.size(), most);
  while (length > 0 && length < text.size() &&
         (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
    --length;
  }
  return length;
}

// "hello-world-1.2.jar" becomes "Hello World".
std::string applicationName(const std::string& jar) {
  std::string name;
  bool startsWord = true;
  for (const char c : fs::path(jar).stem().string()) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '-' || c == '_' || c == ' ' || byte < 0x20 || byte == 0x7F) {
      startsWord = true;
    } else if (startsWord && std::isdigit(byte) && !name.empty()) {
      break;  // a version follows
    } else {
      name += startsWord && !name.empty() ? " " : "";
      name += startsWord ? static_cast<char>(std::toupper(byte)) : c;
      startsWord = false;
    }
  }
  name.resize(std::min(name.size(), lengthOfWholeCharacters(name, kLongestName)));
  name.erase(name.find_last_not_of(' ') + 1);
  if (name.find_first_not_of('.') == std::string::npos) {
    return "My Application";
  }
  const bool isTaken = std::any_of(std::begin(kTakenNames), std::end(kTakenNames),
                                   [&](const char* taken) { return isSameOnDisk(name, taken); });
  return isTaken ? name + " App" : name;
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      char escape[8];
      std::snprintf(escape, sizeof(escape), "\\u%04X", static_cast<unsigned>(byte));
      out += escape;
    } else {
      out += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    }
  }
  return out + '"';
}

// Whether somebody builds something here: what lies beside a jar is not only what it needs then.
bool isSourceFolder(const std::string& folder) {
  constexpr const char* kSigns[] = {"src", "pom.xml", "build.gradle", "build.gradle.kts",
                                    "build.xml"};
  return std::any_of(std::begin(kSigns), std::end(kSigns),
                     [&](const char* sign) { return fs::exists(fs::path(folder) / sign); });
}

// The folders beside a jar that is ready to run, where that expects them.
std::vector<std::string> foldersBeside(const std::string& folder, const FoundJar& jar) {
  std::vector<std::string> beside;
  if (fs::path(jar.path).has_parent_path() || jar.mainClass.empty() || isSourceFolder(folder)) {
    return beside;
  }
  for (const std::string& name : namesIn(folder)) {
    const bool isForJars =
        std::find(std::begin(kJarFolders), std::end(kJarFolders), name) != std::end(kJarFolders);
    if (!name.starts_with('.') && !isForJars && fs::is_directory(fs::path(folder) / name) &&
        fs::path(name).extension() != ".app") {
      beside.push_back(name);
    }
  }
  return beside;
}

// Of jars that expect folders beside them, or examples of such keys.
std::string layoutLines(const std::vector<std::string>& beside) {
  if (beside.empty()) {
    return "# files = [\"data\"]             # more files and folders, put beside lib/\n";
  }
  std::string list;
  for (const std::string& name : beside) {
    list += (list.empty() ? "" : ", ") + quoted(name);
  }
  return "layout = \"beside\"              # jars lie beside the files, as they do here\nfiles = "
         "[" +
         list + "]\n";
}

std::string jarList(const std::vector<FoundJar>& jars) {
  std::string list;
  for (const FoundJar& jar : jars) {
    list += (list.empty() ? "" : ", ") + quoted(jar.path);
  }
  return list;
}

}  // namespace

std::string initialConfig(const std::string& folder) {
  const std::vector<FoundJar> jars = findJars(folder);
  if (jars.empty()) {
    throw PackError("there is no jar here, nor in target, build/libs, dist, out, lib or libs",
                    "build your application first, or go to its folder", {folder, 0});
  }
  const std::string name = applicationName(jars[0].path);
  const std::string mainClass = jars[0].mainClass.empty() ? "com.example.Main" : jars[0].mainClass;
  const std::string icon = fs::exists(fs::path(folder) / "icon.icns")  ? "icon = \"icon.icns\"\n"
                           : fs::exists(fs::path(folder) / "icon.png") ? "icon = \"icon.png\"\n"
                                                                       : "# icon = \"icon.icns\"\n";
  return "# What quillory-pack packs. Paths start from the folder of this file; every key is\n"
         "# described in docs/packaging.md. Lines that begin with # are examples.\n"
         "\n"
         "[application]\n"
         "name = " +
         quoted(name) +
         "             # without \"-\"; folders are named after it\n"
         "version = 1                    # a whole number; raise it with every release\n"
         "# display-version = \"1.0.0\"    # what people read\n"
         "main-class = " +
         quoted(mainClass) +
         "\n"
         "jars = [" +
         jarList(jars) + "]\n" + layoutLines(foldersBeside(folder, jars[0])) +
         "# arguments = [\"--welcome\"]    # before those of the user\n"
         "identifier = " +
         quoted("com.example." + executableNameFor(name)) + "  # from a domain that you own\n" +
         icon +
         "# splash = \"splash.png\"        # shown while the application installs itself\n"
         "# url-schemes = [\"myapp\"]      # myapp://... opens the application\n"
         "\n"
         "[jvm]\n"
         "# memory-mb = 512              # largest heap, as -Xmx512m\n"
         "# initial-memory-mb = 64       # first heap, as -Xms64m\n"
         "# options = [\"-XX:+UseSerialGC\"]  # what Java gets at every start\n"
         "# system-properties = { \"my.property\" = \"value\" }\n"
         "\n"
         "[runtime]                      # leave it out for a small installer that downloads one\n"
         "jlink = true                   # made with the JDK's jlink, modules found with jdeps\n"
         "# add-modules = [\"jdk.crypto.ec\"]  # what jdeps cannot see\n"
         "# folder = \"/path/to/a/jre\"    # instead of jlink\n"
         "\n"
         "[install]\n"
         "for = \"user\"                   # or \"all-users\", \"temporary\"\n"
         "# silent-switch = \"-q\"         # this argument shows no splash\n"
         "\n"
         "[update]\n"
         "# url = \"https://example.com/updates/\"  # where dist/release goes; without it: off\n"
         "# mode = \"background\"          # look for updates, see docs/updates.md; make them "
         "with\n"
         "#                              # quillory-pack release instead of bundle\n"
         "# reserve-key = \"reserve.public.pem\"  # made with: quillory-pack keygen --reserve\n"
         "# rollout = \"7 days\"          # not to everybody at once\n"
         "# notes = \"notes.md\"          # what is new, in Markdown\n"
         "\n"
         "[signing]\n"
         "key = \"signing.pem\"       # make it with: quillory-pack keygen\n";
}

void writeInitialConfig(const std::string& path, Reporter& reporter) {
  if (fs::exists(fs::symlink_status(path))) {
    throw PackError("exists already", "remove it first, or name another file", {path, 0});
  }
  const std::string parent = fs::path(path).parent_path().string();
  writeWholeFile(path, initialConfig(parent.empty() ? "." : parent));
  reporter.value("configuration", path);
  reporter.result(path);
  reporter.line("Read it through, then: quillory-pack keygen && quillory-pack bundle");
}

Command initCommand() {
  const auto file = std::make_shared<std::string>("quillory.toml");
  return {"init",
          "writes a commented quillory.toml for the jars it finds",
          "quillory-pack init",
          {{.name = "FILE", .description = "the configuration to write", .into = file.get()}},
          [file](Reporter& reporter) {
            writeInitialConfig(*file, reporter);
            return kDone;
          }};
}

}  // namespace quillory::pack
