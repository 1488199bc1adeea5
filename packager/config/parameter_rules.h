// What the launcher does not take as a dynamic parameter: asked by the configuration and by "set".
#pragma once
#include <optional>
#include <string>

namespace quillory::pack {

/// What is wrong, behind the name of what it is about ("is no ..."), and what to do about it.
struct Flaw {
  std::string what;
  std::string advice;
};

/// Of an update URL that is not empty.
std::optional<Flaw> flawOfUpdateUrl(const std::string& url);

/// Of a parameter; an empty update_url is none, it switches updates off.
std::optional<Flaw> flawOfParameter(const std::string& name, const std::string& value);

}  // namespace quillory::pack
