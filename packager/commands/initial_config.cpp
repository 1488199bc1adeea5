#include "packager/commands/initial_config.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <optional>

#include "install/version_folders.h"
#include "packager/bytes/byte_sinks.h"
#include "packager/config/name_rules.h"
#include "packager/content/icns.h"
#include "packager/report/joined.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

// Of the updater, of the runtime as it is called below, and of tools in the runtime.
constexpr const char* kTakenNames[] = {kUpdaterName, "JRE", "java", "keytool"};
// So that folders named after it, and the bundle, have room for the rest of their names.
constexpr std::size_t kLongestName = 100;

// Up to `most` bytes, and no character of UTF-8 cut through.
std::size_t lengthOfWholeCharacters(const std::string& text, std::size_t most) {
  std::size_t length = std::min(text.size(), most);
  while (length > 0 && length < text.size() &&
         (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
    --length;
  }
  return length;
}

// "hello-world-1.2" becomes "Hello World".
std::string applicationName(const std::string& found) {
  std::string name;
  bool startsWord = true;
  for (const char c : found) {
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

std::string quotedList(const std::vector<std::string>& texts) {
  std::vector<std::string> all;
  std::transform(texts.begin(), texts.end(), std::back_inserter(all), quoted);
  return '[' + joined(all, ", ") + ']';
}

// What is in the place of examples when somebody gave it.
std::string keyOr(const std::string& key, const std::string& value, const std::string& example) {
  return value.empty() ? example : key + " = " + value + '\n';
}

std::string listOrNothing(const std::vector<std::string>& texts) {
  return texts.empty() ? "" : quotedList(texts);
}

// Where the jars lie, and what lies beside them.
std::string contentLines(const FoundApplication& found) {
  std::string lines;
  if (!found.root.empty()) {
    lines = "root = " + quoted(found.root) + "  # packed as it lies; jars are looked for in it\n";
  }
  lines +=
      "jars = " + quotedList(found.jars) +
      "\njars-stored = true             # smaller to load: compressed together, not each alone\n";
  if (!found.root.empty()) {
    return lines;
  }
  if (found.files.empty()) {
    return lines + "# files = [\"data\"]             # more files and folders, put beside lib/\n";
  }
  if (!found.layout.empty()) {
    lines += "layout = " + quoted(found.layout) +
             "              # jars lie beside the files, as they do here\n";
  }
  return lines + "files = " + quotedList(found.files) + '\n';
}

std::string iconLine(const std::string& folder, const std::string& named) {
  for (const std::string& name : {std::string("icon.icns"), std::string("icon.png"), named}) {
    const std::string path = folder + '/' + name;
    if (!name.empty() && isFile(path) &&
        (name != named || !flawOfIcon({path, {path, 0}}, readWholeFile(path)))) {
      return "icon = " + quoted(name) + '\n';
    }
  }
  return "# icon = \"icon.icns\"\n";
}

std::string jvmLines(const InitialJvm& jvm) {
  std::vector<std::string> properties;
  for (const auto& [name, value] : jvm.systemProperties) {
    properties.push_back(quoted(name) + " = " + quoted(value));
  }
  const auto memory = [](int mebibytes) { return mebibytes == 0 ? "" : std::to_string(mebibytes); };
  return "[jvm]\n" +
         keyOr("memory-mb", memory(jvm.maximumHeap),
               "# memory-mb = 512              # largest heap, as -Xmx512m\n") +
         keyOr("initial-memory-mb", memory(jvm.initialHeap),
               "# initial-memory-mb = 64       # first heap, as -Xms64m\n") +
         keyOr("options", listOrNothing(jvm.options),
               "# options = [\"-XX:+UseSerialGC\"]  # what Java gets at every start\n") +
         keyOr("system-properties",
               properties.empty() ? "" : "{ " + joined(properties, ", ") + " }",
               "# system-properties = { \"my.property\" = \"value\" }\n") +
         '\n';
}

std::string runtimeLines(const std::vector<std::string>& modules) {
  return "[runtime]                      # leave it out for a small installer that downloads one\n"
         "jlink = true                   # made with the JDK's jlink, modules found with jdeps\n" +
         keyOr("modules", listOrNothing(modules), "") +
         "# add-modules = [\"jdk.crypto.ec\"]  # what jdeps cannot see\n"
         "# folder = \"/path/to/a/jre\"    # instead of jlink\n"
         "\n";
}

// The number of mebibytes in "512m" or "2g"; 0 where it is not a whole one.
int mebibytesIn(const std::string& text) {
  const std::size_t digits = text.find_first_not_of("0123456789");
  if (digits == 0 || digits > 6 || digits + 1 != text.size()) {
    return 0;
  }
  const int number = std::stoi(text.substr(0, digits));
  const int unit = std::tolower(static_cast<unsigned char>(text.back()));
  return unit == 'm' ? number : unit == 'g' && number <= 1024 ? number * 1024 : 0;
}

// Whether Java itself looks for a property before anything of an application runs.
bool isAskedForEarly(const std::string& name) {
  constexpr const char* kEarly[] = {"java.", "sun.",    "jdk.",   "file.encoding",
                                    "user.", "stdout.", "stderr."};
  return std::any_of(std::begin(kEarly), std::end(kEarly),
                     [&](const char* start) { return name.starts_with(start); });
}

// Whether a JVM takes it, and not only the program java.
bool isOfTheJvm(const std::string& option) {
  constexpr const char* kStarts[] = {"-X",
                                     "-D",
                                     "-ea",
                                     "-da",
                                     "-esa",
                                     "-dsa",
                                     "-enable",
                                     "-disable",
                                     "--add-exports=",
                                     "--add-opens=",
                                     "--add-reads=",
                                     "--add-modules=",
                                     "--enable-native-access=",
                                     "--enable-preview",
                                     "-agentlib:"};
  return std::any_of(std::begin(kStarts), std::end(kStarts),
                     [&](const char* start) { return option.starts_with(start); });
}

}  // namespace

InitialJvm initialJvm(const std::vector<std::string>& options) {
  InitialJvm jvm;
  for (const std::string& option : options) {
    const std::size_t equals = option.find('=');
    const int mebibytes = option.size() > 4 ? mebibytesIn(option.substr(4)) : 0;
    if (!isOfTheJvm(option) || option.find('$') != std::string::npos) {
      jvm.leftOut.push_back(option);
    } else if (mebibytes != 0 && option.starts_with("-Xmx")) {
      jvm.maximumHeap = mebibytes;
    } else if (mebibytes != 0 && option.starts_with("-Xms")) {
      jvm.initialHeap = mebibytes;
    } else if (option.starts_with("-D") && option.size() > 2 &&
               !isAskedForEarly(option.substr(2, equals - 2))) {
      jvm.systemProperties.emplace_back(
          option.substr(2, equals - 2),
          equals == std::string::npos ? "" : option.substr(equals + 1));
    } else {
      jvm.options.push_back(option);
    }
  }
  return jvm;
}

std::string initialConfig(const FoundApplication& found, const std::string& folder) {
  const std::string name = applicationName(found.name);
  const std::string mainClass = found.mainClass.empty() ? "com.example.Main" : found.mainClass;
  return "# What quillory-pack packs. Paths start from the folder of this file; every key is\n"
         "# described in docs/packaging.md. Lines that begin with # are examples.\n"
         "\n"
         "[application]\n"
         "name = " +
         quoted(name) +
         "             # without \"-\"; folders are named after it\n"
         "version = 1                    # a whole number; raise it with every release\n" +
         keyOr("display-version", found.displayVersion.empty() ? "" : quoted(found.displayVersion),
               "# display-version = \"1.0.0\"    # what people read\n") +
         "main-class = " + quoted(mainClass) + "\n" + contentLines(found) +
         keyOr("arguments", listOrNothing(found.arguments),
               "# arguments = [\"--welcome\"]    # before those of the user\n") +
         keyOr("native", listOrNothing(found.nativeLibraries), "") +
         "identifier = " + quoted("com.example." + executableNameFor(name)) +
         "  # from a domain that you own\n" + iconLine(folder, found.icon) +
         "# splash = \"splash.png\"        # shown while the application installs itself\n"
         "# url-schemes = [\"myapp\"]      # myapp://... opens the application\n"
         "\n" +
         jvmLines(initialJvm(found.jvmOptions)) + runtimeLines(found.modules) +
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

}  // namespace quillory::pack
