#include "packager/config/parameter_rules.h"

#include <algorithm>

#include "packager/config/name_rules.h"

namespace quillory::pack {
namespace {

constexpr char kUrlExample[] = "write it as in https://example.com/updates/";

}  // namespace

std::optional<Flaw> flawOfUpdateUrl(const std::string& url) {
  if (url.rfind("https://", 0) != 0 && url.rfind("http://", 0) != 0) {
    return Flaw{"does not begin with https:// or http://", kUrlExample};
  }
  const std::size_t host = url.find("//") + 2;
  if (host == url.size() || url.find_first_of("/:?#", host) == host) {
    return Flaw{"names no server", kUrlExample};
  }
  if (std::any_of(url.begin(), url.end(), [](unsigned char c) { return c <= 0x20 || c == 0x7F; })) {
    return Flaw{"holds a blank or a control character", "write a blank as %20"};
  }
  if (url.find_first_of("?#") != std::string::npos) {
    return Flaw{"holds a \"?\" or \"#\", and the names of files are put behind it",
                "name the folder that holds the release files"};
  }
  return std::nullopt;
}

std::optional<Flaw> flawOfParameter(const std::string& name, const std::string& value) {
  if (name.empty()) {
    return Flaw{"has no name", "give the parameter a name"};
  }
  if ((name == "force_spawn" || name == "show_no_ui") && value != "true" && value != "false") {
    return Flaw{"is \"true\" or \"false\", and nothing else", "write one of the two"};
  }
  if (name == "jre_name") {
    const std::optional<Finding> flaw = flawOfFolderName(value);
    return flaw ? std::optional(Flaw{flaw->what, flaw->advice}) : std::nullopt;
  }
  if (name == "update_url" && !value.empty()) {
    return flawOfUpdateUrl(value);
  }
  return std::nullopt;
}

}  // namespace quillory::pack
