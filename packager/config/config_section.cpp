#include "packager/config/config_section.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "packager/config/toml_versions.h"
#include "packager/report/nearest_name.h"

namespace quillory::pack {
namespace {

// Dates and times to the second, as some people number releases, have 14 digits.
constexpr std::int64_t kLargestVersion = 1'000'000'000'000'000'000;

// Version 3 of the library reads numbers that do not fit as the nearest one that does.
bool isSaturated(std::int64_t number) {
  return number == std::numeric_limits<std::int64_t>::max() ||
         number == std::numeric_limits<std::int64_t>::min();
}

// With the line on which it begins. Tables come in no order, so findings are sorted by it later.
unsigned lineOf(const toml::value& value) { return lineAt(value.location()); }

std::string kindOf(const toml::value& value) {
  switch (value.type()) {
    case toml::value_t::boolean:
      return "true or false";
    case toml::value_t::integer:
      return "a whole number";
    case toml::value_t::floating:
      return "a number with a fraction";
    case toml::value_t::string:
      return "a text";
    case toml::value_t::array:
      return "a list";
    case toml::value_t::table:
      return "a table";
    default:
      return "a date or time";
  }
}

std::string didYouMean(const std::string& name, const std::vector<std::string>& known) {
  const std::string nearest = nearestName(name, known);
  if (!nearest.empty()) {
    return "did you mean \"" + nearest + "\"?";
  }
  std::string all = "known here:";
  for (const std::string& candidate : known) {
    all += ' ' + candidate;
  }
  return all;
}

}  // namespace

ConfigSection::ConfigSection(const toml::value& root, std::string name, Config& config,
                             Findings& findings)
    : name_(std::move(name)), config_(config), findings_(findings) {
  const auto& tables = root.as_table();
  const auto found = tables.find(name_);
  if (found == tables.end()) {
    return;
  }
  if (!found->second.is_table()) {
    findings_.push_back({Severity::kError, "wrong-kind",
                         "\"" + name_ + "\" is " + kindOf(found->second) + ", not a table",
                         placeOf(found->second), "write [" + name_ + "] on a line of its own"});
    return;
  }
  table_ = &found->second;
  config_.places[name_] = placeOf(*table_);
}

Place ConfigSection::placeOf(const toml::value& value) const {
  return {config_.file, lineOf(value)};
}

bool ConfigSection::has(const std::string& key) const {
  return table_ != nullptr && table_->as_table().count(key) != 0;
}

const toml::value* ConfigSection::find(const std::string& key) {
  known_.push_back(key);
  if (!has(key)) {
    return nullptr;
  }
  const toml::value& value = table_->as_table().at(key);
  config_.places[fullName(key)] = placeOf(value);
  return &value;
}

void ConfigSection::wrongKind(const std::string& key, const toml::value& value,
                              const std::string& wanted, const std::string& example) {
  findings_.push_back({Severity::kError, "wrong-kind",
                       fullName(key) + " is " + kindOf(value) + ", not " + wanted, placeOf(value),
                       "write it as in " + key + " = " + example});
}

void ConfigSection::error(const std::string& key, const std::string& rule, const std::string& what,
                          const std::string& advice) {
  findings_.push_back({Severity::kError, rule, what, config_.placeOf(fullName(key)), advice});
}

void ConfigSection::text(const std::string& key, std::string& out) {
  if (const toml::value* value = find(key)) {
    if (value->is_string()) {
      out = plainText(value->as_string());
    } else {
      wrongKind(key, *value, "a text in quotes", "\"...\"");
    }
  }
}

void ConfigSection::flag(const std::string& key, bool& out) {
  if (const toml::value* value = find(key)) {
    if (value->is_boolean()) {
      out = value->as_boolean();
    } else {
      wrongKind(key, *value, "true or false", "true");
    }
  }
}

void ConfigSection::number(const std::string& key, std::int64_t& out, std::int64_t least,
                           std::int64_t most) {
  const toml::value* value = find(key);
  if (value == nullptr) {
    return;
  }
  if (!value->is_integer()) {
    wrongKind(key, *value, "a whole number", std::to_string(std::max<std::int64_t>(least, 1)));
  } else if (value->as_integer() < least || value->as_integer() > most) {
    error(key, "range",
          fullName(key) + " is " + std::to_string(value->as_integer()) + ", not a number from " +
              std::to_string(least) + " to " + std::to_string(most),
          "choose one of these, or leave " + key + " out");
  } else {
    out = value->as_integer();
  }
}

void ConfigSection::number(const std::string& key, int& out, int least, int most) {
  std::int64_t wide = out;
  number(key, wide, least, most);
  out = static_cast<int>(wide);
}

void ConfigSection::version(const std::string& key, std::int64_t& out) {
  const toml::value* value = find(key);
  if (value == nullptr) {
    return;
  }
  if (value->is_integer() && value->as_integer() > kLargestVersion) {
    error(key, "version",
          fullName(key) + " is larger than " + std::to_string(kLargestVersion) +
              ": the launcher counts up to " +
              std::to_string(std::numeric_limits<std::int64_t>::max()) +
              ", so that no room would be left for later versions",
          "count releases, as in " + key + " = 12");
    return;
  }
  if (value->is_integer() && value->as_integer() >= 0) {
    out = value->as_integer();
    return;
  }
  error(key, "version",
        fullName(key) +
            " is not a whole number: the launcher compares versions as numbers, so "
            "1.9 and 1.10 would both be 1",
        "count releases, as in " + key + " = 12; what people read is application.display-version");
}

void ConfigSection::texts(const std::string& key, std::vector<std::string>& out) {
  const toml::value* value = find(key);
  if (value == nullptr) {
    return;
  }
  if (!value->is_array()) {
    wrongKind(key, *value, "a list of texts", "[\"...\"]");
    return;
  }
  out.clear();
  for (const toml::value& item : value->as_array()) {
    if (item.is_string()) {
      out.push_back(plainText(item.as_string()));
    } else {
      wrongKind(key, item, "a text in quotes", "[\"...\"]");
    }
  }
}

void ConfigSection::files(const std::string& key, std::vector<ExtraFile>& out) {
  const toml::value* value = find(key);
  if (value == nullptr) {
    return;
  }
  const std::string wanted = "a list of names or of { from = \"...\", to = \"...\" }";
  const std::string example = "[\"...\", { from = \"...\", to = \"...\" }]";
  if (!value->is_array()) {
    wrongKind(key, *value, wanted, example);
    return;
  }
  for (const toml::value& item : value->as_array()) {
    if (item.is_string()) {
      out.push_back({plainText(item.as_string()), ""});
    } else if (item.is_table()) {
      out.push_back(extraFile(key, item));
    } else {
      wrongKind(key, item, wanted, example);
      continue;
    }
    if (out.back().from.empty()) {
      findings_.push_back({Severity::kError, "missing-key",
                           fullName(key) + " has an entry that names no file", placeOf(item),
                           "write { from = \"...\" } with a name, or leave the entry out"});
    }
  }
}

ExtraFile ConfigSection::extraFile(const std::string& key, const toml::value& item) {
  ExtraFile file;
  for (const auto& [name, part] : item.as_table()) {
    if (name != "from" && name != "to") {
      findings_.push_back({Severity::kError, "unknown-key",
                           "there is no " + name + " in an entry of " + fullName(key),
                           placeOf(part), didYouMean(name, {"from", "to"})});
    } else if (!part.is_string()) {
      wrongKind(key + '.' + name, part, "a text in quotes", "\"...\"");
    } else {
      (name == "from" ? file.from : file.to) = plainText(part.as_string());
    }
  }
  return file;
}

void ConfigSection::pairs(Parameters& out) {
  if (table_ == nullptr) {
    return;
  }
  std::vector<std::pair<unsigned, std::string>> keys;
  for (const auto& [key, value] : table_->as_table()) {
    keys.emplace_back(lineOf(value), key);
  }
  std::sort(keys.begin(), keys.end());
  for (const auto& [line, key] : keys) {
    const toml::value& value = *find(key);
    if (value.is_string()) {
      out.emplace_back(key, plainText(value.as_string()));
    } else if (value.is_integer() && isSaturated(value.as_integer())) {
      error(key, "range", fullName(key) + " is a number that is too large to be read as one",
            "write it in quotes");
    } else if (value.is_integer()) {
      out.emplace_back(key, std::to_string(value.as_integer()));
    } else if (value.is_boolean()) {
      out.emplace_back(key, value.as_boolean() ? "true" : "false");
    } else {
      wrongKind(key, value, "a text, a whole number, or true or false", "\"...\"");
    }
  }
}

void ConfigSection::choice(const std::string& key, const std::vector<std::string>& names,
                           int& out) {
  const toml::value* value = find(key);
  if (value == nullptr) {
    return;
  }
  const std::string given = value->is_string() ? plainText(value->as_string()) : "";
  const auto found = std::find(names.begin(), names.end(), given);
  if (found != names.end()) {
    out = static_cast<int>(found - names.begin());
    return;
  }
  std::string all;
  for (const std::string& name : names) {
    all += (all.empty() ? "\"" : ", \"") + name + '"';
  }
  const std::string nearest = nearestName(given, names);
  error(key, "choice", fullName(key) + " is none of " + all,
        nearest.empty() ? "choose one of them" : "did you mean \"" + nearest + "\"?");
}

void ConfigSection::require(const std::string& key, const std::string& advice) {
  if (!has(key)) {
    findings_.push_back({Severity::kError, "missing-key", fullName(key) + " is missing",
                         config_.placeOf(name_), advice});
  }
}

void ConfigSection::rejectUnknown() {
  if (table_ == nullptr) {
    return;
  }
  for (const auto& [key, value] : table_->as_table()) {
    if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
      findings_.push_back({Severity::kError, "unknown-key", "there is no " + fullName(key),
                           placeOf(value), didYouMean(key, known_)});
    }
  }
}

void rejectUnknownSections(const toml::value& root, const std::vector<std::string>& known,
                           const std::string& file, Findings& findings) {
  for (const auto& [key, value] : root.as_table()) {
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      findings.push_back({Severity::kError,
                          "unknown-key",
                          value.is_table() ? "there is no table [" + key + "]"
                                           : "\"" + key + "\" stands outside of every table",
                          {file, lineOf(value)},
                          didYouMean(key, known)});
    }
  }
}

}  // namespace quillory::pack
