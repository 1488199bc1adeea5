#include "packager/content/runtime_options.h"

#include <algorithm>
#include <sstream>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// A JVM knows the classes of an application as an unnamed module, whichever loader has them.
constexpr char kEverybody[] = "=ALL-UNNAMED";

std::vector<std::string> wordsOf(const std::string& text) {
  std::istringstream words(text);
  std::vector<std::string> found;
  for (std::string word; words >> word;) {
    found.push_back(word);
  }
  return found;
}

// "java.desktop/sun.awt" names a package of a module.
void addPackages(const std::string& value, const char* option, std::vector<ManifestOption>& out) {
  for (const std::string& word : wordsOf(value)) {
    const std::size_t slash = word.find('/');
    if (slash != std::string::npos && slash > 0 && slash + 1 < word.size()) {
      out.push_back({word.substr(0, slash), option + word + kEverybody});
    }
  }
}

std::string quoted(const std::string& option) {
  if (option.find_first_of("\n\r") != std::string::npos) {
    throw PackError("an option holds a line break: " + option, "leave it out");
  }
  if (option.find_first_of(" \t'\"") == std::string::npos) {
    return option;
  }
  const bool hasSingle = option.find('\'') != std::string::npos;
  if (hasSingle && option.find('"') != std::string::npos) {
    throw PackError("an option holds both kinds of quotes: " + option, "leave out one of them");
  }
  const char quote = hasSingle ? '"' : '\'';
  return quote + option + quote;
}

}  // namespace

std::vector<ManifestOption> manifestOptions(const Jar& mainJar) {
  std::vector<ManifestOption> options;
  addPackages(mainJar.manifestValue("Add-Exports"), "--add-exports=", options);
  addPackages(mainJar.manifestValue("Add-Opens"), "--add-opens=", options);
  if (mainJar.manifestValue("Enable-Native-Access") == "ALL-UNNAMED") {
    options.push_back({"", std::string("--enable-native-access") + kEverybody});
  }
  return options;
}

std::vector<std::string> optionsAbout(const std::vector<ManifestOption>& options,
                                      const std::vector<std::string>& modules) {
  std::vector<std::string> wanted;
  for (const auto& [module, option] : options) {
    if (module.empty() || std::find(modules.begin(), modules.end(), module) != modules.end()) {
      wanted.push_back(option);
    }
  }
  return wanted;
}

std::string optionText(const std::vector<std::string>& options) {
  std::string text;
  for (const std::string& option : options) {
    text += (text.empty() ? "" : " ") + quoted(option);
  }
  return text;
}

std::vector<std::string> modulesListed(std::string_view printed) {
  std::vector<std::string> modules;
  for (const std::string& word : wordsOf(std::string(printed))) {
    modules.push_back(word.substr(0, word.find('@')));
  }
  return modules;
}

}  // namespace quillory::pack
