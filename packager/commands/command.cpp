#include "packager/commands/command.h"

#include <algorithm>

namespace quillory::pack {
namespace {

struct DefaultText {
  std::string operator()(const bool*) const { return ""; }
  std::string operator()(const int* number) const { return std::to_string(*number); }
  std::string operator()(const std::optional<int>* number) const {
    return *number ? std::to_string(**number) : "";
  }
  std::string operator()(const std::string* text) const { return *text; }
  std::string operator()(const std::vector<std::string>*) const { return ""; }
};

}  // namespace

bool isOption(const Argument& argument) { return argument.name.starts_with('-'); }

std::vector<std::string> namesOf(const Argument& argument) {
  std::vector<std::string> names;
  std::size_t begin = 0;
  while (begin <= argument.name.size()) {
    const std::size_t end = std::min(argument.name.find(',', begin), argument.name.size());
    names.push_back(argument.name.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

std::string defaultOf(const Argument& argument) { return std::visit(DefaultText{}, argument.into); }

}  // namespace quillory::pack
