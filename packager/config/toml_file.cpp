#include "packager/config/toml_file.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <sstream>
#include <tuple>
#include <utility>

#include "packager/bytes/byte_sinks.h"
#include "packager/config/toml_limits.h"
#include "packager/config/toml_versions.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// "[error] toml::parse_key: ..." in the library's words; the first line says it.
std::string parserMessage(const std::string& what) {
  const std::string first = what.substr(0, what.find('\n'));
  const std::size_t colon = first.find(": ");
  const std::string message = colon == std::string::npos ? first : first.substr(colon + 2);
  // Of some mistakes it says where they are, and nothing else.
  return message.find_first_not_of(' ') == std::string::npos ? "this is no TOML" : message;
}

toml::value parse(const std::string& path) {
  // A byte more than may be there, so that a file without an end is seen to be too large.
  const std::string bytes = readBeginningOf(path, kLargestTomlFile + 1);
  if (const std::optional<Finding> excess = excessOfToml(path, bytes)) {
    throw RejectedInput({*excess});
  }
  std::istringstream text(bytes);
  try {
    return toml::parse(text, path);
  } catch (const toml::exception& e) {
    throw RejectedInput({{Severity::kError,
                          "toml",
                          parserMessage(e.what()),
                          {path, lineOfMistake(e)},
                          "https://toml.io explains the notation"}});
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& e) {  // of a number that the C++ library does not take, say
    throw RejectedInput({{Severity::kError,
                          "toml",
                          parserMessage(e.what()),
                          {path, 0},
                          "https://toml.io explains the notation"}});
  }
}

TomlValue::Table tableOf(const toml::value& table);

TomlValue valueOf(const toml::value& value) {
  TomlValue plain{TomlValue::DateOrTime{}, lineAt(value.location())};
  switch (value.type()) {
    case toml::value_t::boolean:
      plain.content = value.as_boolean();
      break;
    case toml::value_t::integer:
      plain.content = static_cast<std::int64_t>(value.as_integer());
      break;
    case toml::value_t::floating:
      plain.content = TomlValue::Fraction{};
      break;
    case toml::value_t::string:
      plain.content = plainText(value.as_string());
      break;
    case toml::value_t::array: {
      TomlValue::List list;
      for (const toml::value& item : value.as_array()) {
        list.push_back(valueOf(item));
      }
      plain.content = std::move(list);
      break;
    }
    case toml::value_t::table:
      plain.content = tableOf(value);
      break;
    default:
      break;
  }
  return plain;
}

// The library keeps tables in no order.
TomlValue::Table tableOf(const toml::value& table) {
  TomlValue::Table entries;
  for (const auto& [key, value] : table.as_table()) {
    entries.push_back({key, valueOf(value)});
  }
  std::sort(entries.begin(), entries.end(), [](const TomlEntry& a, const TomlEntry& b) {
    return std::tie(a.value.line, a.key) < std::tie(b.value.line, b.key);
  });
  return entries;
}

struct KindNames {
  const char* operator()(bool) const { return "true or false"; }
  const char* operator()(std::int64_t) const { return "a whole number"; }
  const char* operator()(TomlValue::Fraction) const { return "a number with a fraction"; }
  const char* operator()(TomlValue::DateOrTime) const { return "a date or time"; }
  const char* operator()(const std::string&) const { return "a text"; }
  const char* operator()(const TomlValue::List&) const { return "a list"; }
  const char* operator()(const TomlValue::Table&) const { return "a table"; }
};

}  // namespace

const TomlValue* find(const TomlValue::Table& table, const std::string& key) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const TomlEntry& entry) { return entry.key == key; });
  return found == table.end() ? nullptr : &found->value;
}

std::string kindOf(const TomlValue& value) { return std::visit(KindNames{}, value.content); }

TomlValue::Table readTomlFile(const std::string& path) { return tableOf(parse(path)); }

}  // namespace quillory::pack
