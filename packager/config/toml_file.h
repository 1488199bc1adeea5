// A file in TOML as plain values, each with the line on which it begins. The library that parses it
// stays behind this header.
#pragma once
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace quillory::pack {

struct TomlEntry;

struct TomlValue {
  struct Fraction {};    ///< a number with one; nobody asks which
  struct DateOrTime {};  ///< likewise
  using List = std::vector<TomlValue>;
  using Table = std::vector<TomlEntry>;  ///< by line, then by key; each key once

  std::variant<bool, std::int64_t, Fraction, DateOrTime, std::string, List, Table> content;
  unsigned line = 0;

  /// The content when it is of this type, else null. What is returned lives as long as the value.
  template <typename Type>
  const Type* as() const {
    return std::get_if<Type>(&content);
  }
};

struct TomlEntry {
  std::string key;
  TomlValue value;
};

/// The value of a key; null when the table has none.
const TomlValue* find(const TomlValue::Table& table, const std::string& key);

/// What a value is, for people: "a whole number".
std::string kindOf(const TomlValue& value);

/// The tables of a file. Throws RejectedInput, with the line, when it is not TOML or goes beyond
/// toml_limits.h, and PackError when it cannot be read. Whole numbers that do not fit are the
/// nearest that do, or an error: the versions of the library differ.
TomlValue::Table readTomlFile(const std::string& path);

}  // namespace quillory::pack
