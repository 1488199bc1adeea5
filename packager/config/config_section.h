// One table of the configuration file, read key by key. What is asked for is what is known: keys
// that nobody asked for are errors, with the nearest known name.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "packager/config/config.h"
#include "packager/config/toml_file.h"

namespace quillory::pack {

class ConfigSection {
 public:
  /// `name` is the table's; a table that is missing counts as empty.
  ConfigSection(const TomlValue::Table& root, std::string name, Config& config, Findings& findings);

  /// Whether the table has this key, which does not become known by that.
  bool has(const std::string& key) const;

  // Each makes its key known, and leaves `out` as it is when the key is missing, or has a value
  // that is of the wrong kind or out of its limits; such a value becomes a finding.
  void text(const std::string& key, std::string& out);
  void flag(const std::string& key, bool& out);
  void number(const std::string& key, std::int64_t& out, std::int64_t least, std::int64_t most);
  void number(const std::string& key, int& out, int least, int most);
  /// A version of a release: a whole number, with room for later ones.
  void version(const std::string& key, std::int64_t& out);
  void texts(const std::string& key, std::vector<std::string>& out);
  void files(const std::string& key, std::vector<ExtraFile>& out);
  /// All keys, whatever their names, with text values (numbers and flags become texts).
  void pairs(Parameters& out);
  /// The same of a table that is the value of `key`: { a = "1", "b.c" = true }.
  void pairs(const std::string& key, Parameters& out);
  /// One of the names given; the index of the one found is stored.
  void choice(const std::string& key, const std::vector<std::string>& names, int& out);

  /// Reports `key` as missing when it is.
  void require(const std::string& key, const std::string& advice);
  /// Reports the keys that were not asked for. Call it last.
  void rejectUnknown();

  /// Adds an error at the place of the key, or at the file when the key is missing.
  void error(const std::string& key, const std::string& rule, const std::string& what,
             const std::string& advice);

 private:
  /// Its value, which is known from now on; null when the key is missing.
  const TomlValue* ask(const std::string& key);
  /// `example` is a value of the right kind, as it is written.
  void wrongKind(const std::string& key, const TomlValue& value, const std::string& wanted,
                 const std::string& example);
  /// Adds `name` and its value as text; `fullName` is what messages have.
  void pair(const std::string& fullName, const std::string& name, const TomlValue& value,
            Parameters& out);
  ExtraFile extraFile(const std::string& key, const TomlValue::Table& item);
  Place placeOf(const TomlValue& value) const;
  /// "application.name", as messages and places have it.
  std::string fullName(const std::string& key) const { return name_ + '.' + key; }

  std::string name_;
  const TomlValue::Table* table_ = nullptr;
  Config& config_;
  Findings& findings_;
  std::vector<std::string> known_;
};

/// Reports the tables, and the keys outside of tables, that are not among `known`.
void rejectUnknownSections(const TomlValue::Table& root, const std::vector<std::string>& known,
                           const std::string& file, Findings& findings);

}  // namespace quillory::pack
