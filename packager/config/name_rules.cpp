#include "packager/config/name_rules.h"

#include <strings.h>

#include <algorithm>
#include <cctype>

namespace quillory::pack {
namespace {

// Less ".icns", which the icon's name has behind it.
constexpr std::size_t kLongestExecutable = 255 - 5;

bool holdsControlCharacter(const std::string& name) {
  return std::any_of(name.begin(), name.end(),
                     [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

bool hasBlankAtAnEnd(const std::string& name) {
  return !name.empty() && (name.front() == ' ' || name.back() == ' ');
}

// What no name of a file or folder can be.
std::optional<Finding> flawOfAnyName(const Subject& subject, const std::string& name) {
  if (name.empty()) {
    return Finding{Severity::kError, "name", subject.name + " is empty", subject.place,
                   "give it a name"};
  }
  if (name == "." || name == "..") {
    return Finding{
        Severity::kError, "name",
        subject.name + " is \"" + name + "\", which stands for a folder that is there already",
        subject.place, "choose a name of letters and digits"};
  }
  if (name.find('/') != std::string::npos || holdsControlCharacter(name)) {
    return Finding{
        Severity::kError, "name",
        subject.name + " holds a \"/\" or a control character, which no name of a file should hold",
        subject.place, "leave it out"};
  }
  if (hasBlankAtAnEnd(name)) {
    return Finding{Severity::kError, "name",
                   subject.name + " begins or ends with a blank, which nobody sees", subject.place,
                   "leave it out"};
  }
  return std::nullopt;
}

}  // namespace

std::optional<Finding> flawOfFolderName(const Subject& subject, const std::string& name) {
  if (name.find('-') != std::string::npos) {
    return Finding{
        Severity::kError, "name-dash",
        subject.name +
            " holds a \"-\": the launcher takes what stands between the first two dashes of "
            "a folder's name, so it would never find \"" +
            name + "\" again",
        subject.place, "use a blank, a dot or nothing instead"};
  }
  if (name.find(':') != std::string::npos) {
    return Finding{
        Severity::kError, "name-colon",
        subject.name +
            " holds a \":\", which separates the entries of a class path, and every class "
            "path goes through folders of this name",
        subject.place, "leave it out"};
  }
  return flawOfAnyName(subject, name);
}

std::optional<Finding> flawOfExecutableName(const Subject& subject, const std::string& name) {
  if (name.size() > kLongestExecutable) {
    return Finding{Severity::kError, "name",
                   subject.name + " has " + std::to_string(name.size()) +
                       " bytes; with the ending of its icon, " +
                       std::to_string(kLongestExecutable) + " fit into a file's name",
                   subject.place, "shorten it"};
  }
  return flawOfAnyName(subject, name);
}

std::string executableNameFor(const std::string& applicationName) {
  std::string name;
  for (const char c : applicationName) {
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_') {
      name += c;
    }
  }
  return name.empty() || name[0] == '.' ? "launcher" : name;
}

bool isSameOnDisk(const std::string& a, const std::string& b) {
  // Nothing here calls setlocale(), so only ASCII letters have two cases.
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

}  // namespace quillory::pack
