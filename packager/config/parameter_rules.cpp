#include "packager/config/parameter_rules.h"

#include <algorithm>

namespace quillory::pack {
namespace {

constexpr char kUrlExample[] = "write it as in https://example.com/updates/";

}  // namespace

std::optional<Finding> flawOfUpdateUrl(const Subject& subject, const std::string& url) {
  const auto flaw = [&](const char* what, const char* advice) {
    return Finding{Severity::kError, "update-url", subject.name + ' ' + what, subject.place,
                   advice};
  };
  if (url.rfind("https://", 0) != 0 && url.rfind("http://", 0) != 0) {
    return flaw("does not begin with https:// or http://", kUrlExample);
  }
  const std::size_t host = url.find("//") + 2;
  if (host == url.size() || url.find_first_of("/:?#", host) == host) {
    return flaw("names no server", kUrlExample);
  }
  if (std::any_of(url.begin(), url.end(), [](unsigned char c) { return c <= 0x20 || c == 0x7F; })) {
    return flaw("holds a blank or a control character", "write a blank as %20");
  }
  if (url.find_first_of("?#") != std::string::npos) {
    return flaw("holds a \"?\" or \"#\", and the names of files are put behind it",
                "name the folder that holds the release files");
  }
  return std::nullopt;
}

std::optional<Finding> flawOfParameter(const Subject& subject, const std::string& name,
                                       const std::string& value) {
  const auto flaw = [&](const char* what, const char* advice) {
    return Finding{Severity::kError, "parameter", subject.name + ' ' + what, subject.place, advice};
  };
  if (name.empty()) {
    return flaw("has no name", "give the parameter a name");
  }
  if ((name == "force_spawn" || name == "show_no_ui" || name == "hardened" ||
       name == "error_dialog") &&
      value != "true" && value != "false") {
    return flaw("is \"true\" or \"false\", and nothing else", "write one of the two");
  }
  if (name == "jre_name") {
    return flawOfFolderName(subject, value);
  }
  if (name == "update_url" && !value.empty()) {
    return flawOfUpdateUrl(subject, value);
  }
  return std::nullopt;
}

}  // namespace quillory::pack
