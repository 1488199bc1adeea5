#include "packager/config/config_section.h"

#include <algorithm>
#include <limits>
#include <utility>

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

ConfigSection::ConfigSection(const TomlValue::Table& root, std::string name, Config& config,
                             Findings& findings)
    : name_(std::move(name)), config_(config), findings_(findings) {
  const TomlValue* found = find(root, name_);
  if (found == nullptr) {
    return;
  }
  table_ = found->as<TomlValue::Table>();
  if (table_ == nullptr) {
    findings_.push_back({Severity::kError, "wrong-kind",
                         "\"" + name_ + "\" is " + kindOf(*found) + ", not a table",
                         placeOf(*found), "write [" + name_ + "] on a line of its own"});
    return;
  }
  config_.places[name_] = placeOf(*found);
}

Place ConfigSection::placeOf(const TomlValue& value) const { return {config_.file, value.line}; }

bool ConfigSection::has(const std::string& key) const {
  return table_ != nullptr && find(*table_, key) != nullptr;
}

const TomlValue* ConfigSection::ask(const std::string& key) {
  known_.push_back(key);
  const TomlValue* value = table_ == nullptr ? nullptr : find(*table_, key);
  if (value != nullptr) {
    config_.places[fullName(key)] = placeOf(*value);
  }
  return value;
}

void ConfigSection::wrongKind(const std::string& key, const TomlValue& value,
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
  if (const TomlValue* value = ask(key)) {
    if (const auto* text = value->as<std::string>()) {
      out = *text;
    } else {
      wrongKind(key, *value, "a text in quotes", "\"...\"");
    }
  }
}

void ConfigSection::flag(const std::string& key, bool& out) {
  if (const TomlValue* value = ask(key)) {
    if (const auto* flag = value->as<bool>()) {
      out = *flag;
    } else {
      wrongKind(key, *value, "true or false", "true");
    }
  }
}

void ConfigSection::number(const std::string& key, std::int64_t& out, std::int64_t least,
                           std::int64_t most) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const auto* given = value->as<std::int64_t>();
  if (given == nullptr) {
    wrongKind(key, *value, "a whole number", std::to_string(std::max<std::int64_t>(least, 1)));
  } else if (*given < least || *given > most) {
    error(key, "range",
          fullName(key) + " is " + std::to_string(*given) + ", not a number from " +
              std::to_string(least) + " to " + std::to_string(most),
          "choose one of these, or leave " + key + " out");
  } else {
    out = *given;
  }
}

void ConfigSection::number(const std::string& key, int& out, int least, int most) {
  std::int64_t wide = out;
  number(key, wide, least, most);
  out = static_cast<int>(wide);
}

void ConfigSection::version(const std::string& key, std::int64_t& out) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const auto* given = value->as<std::int64_t>();
  if (given != nullptr && *given > kLargestVersion) {
    error(key, "version",
          fullName(key) + " is larger than " + std::to_string(kLargestVersion) +
              ": the launcher counts up to " +
              std::to_string(std::numeric_limits<std::int64_t>::max()) +
              ", so that no room would be left for later versions",
          "count releases, as in " + key + " = 12");
    return;
  }
  if (given != nullptr && *given >= 0) {
    out = *given;
    return;
  }
  error(key, "version",
        fullName(key) +
            " is not a whole number: the launcher compares versions as numbers, so "
            "1.9 and 1.10 would both be 1",
        "count releases, as in " + key + " = 12; what people read is application.display-version");
}

void ConfigSection::texts(const std::string& key, std::vector<std::string>& out) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const auto* list = value->as<TomlValue::List>();
  if (list == nullptr) {
    wrongKind(key, *value, "a list of texts", "[\"...\"]");
    return;
  }
  out.clear();
  for (const TomlValue& item : *list) {
    if (const auto* text = item.as<std::string>()) {
      out.push_back(*text);
    } else {
      wrongKind(key, item, "a text in quotes", "[\"...\"]");
    }
  }
}

void ConfigSection::files(const std::string& key, std::vector<ExtraFile>& out) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const std::string wanted = "a list of names or of { from = \"...\", to = \"...\" }";
  const std::string example = "[\"...\", { from = \"...\", to = \"...\" }]";
  const auto* list = value->as<TomlValue::List>();
  if (list == nullptr) {
    wrongKind(key, *value, wanted, example);
    return;
  }
  for (const TomlValue& item : *list) {
    if (const auto* name = item.as<std::string>()) {
      out.push_back({*name, ""});
    } else if (const auto* table = item.as<TomlValue::Table>()) {
      out.push_back(extraFile(key, *table));
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

ExtraFile ConfigSection::extraFile(const std::string& key, const TomlValue::Table& item) {
  ExtraFile file;
  for (const auto& [name, part] : item) {
    if (name != "from" && name != "to") {
      findings_.push_back({Severity::kError, "unknown-key",
                           "there is no " + name + " in an entry of " + fullName(key),
                           placeOf(part), didYouMean(name, {"from", "to"})});
    } else if (const auto* text = part.as<std::string>()) {
      (name == "from" ? file.from : file.to) = *text;
    } else {
      wrongKind(key + '.' + name, part, "a text in quotes", "\"...\"");
    }
  }
  return file;
}

void ConfigSection::pair(const std::string& fullName, const std::string& name,
                         const TomlValue& value, Parameters& out) {
  const auto* number = value.as<std::int64_t>();
  if (const auto* text = value.as<std::string>()) {
    out.emplace_back(name, *text);
  } else if (number != nullptr && isSaturated(*number)) {
    findings_.push_back({Severity::kError, "range",
                         fullName + " is a number that is too large to be read as one",
                         placeOf(value), "write it in quotes"});
  } else if (number != nullptr) {
    out.emplace_back(name, std::to_string(*number));
  } else if (const auto* flag = value.as<bool>()) {
    out.emplace_back(name, *flag ? "true" : "false");
  } else {
    findings_.push_back(
        {Severity::kError, "wrong-kind",
         fullName + " is " + kindOf(value) + ", not a text, a whole number, or true or false",
         placeOf(value), "write it as in " + name + " = \"...\""});
  }
}

void ConfigSection::pairs(Parameters& out) {
  if (table_ == nullptr) {
    return;
  }
  for (const auto& [key, value] : *table_) {
    ask(key);
    pair(fullName(key), key, value, out);
  }
}

void ConfigSection::pairs(const std::string& key, Parameters& out) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const auto* table = value->as<TomlValue::Table>();
  if (table == nullptr) {
    wrongKind(key, *value, "a table of names and values", "{ \"a.name\" = \"a value\" }");
    return;
  }
  for (const auto& [name, item] : *table) {
    pair(fullName(key) + '.' + name, name, item, out);
  }
}

void ConfigSection::choice(const std::string& key, const std::vector<std::string>& names,
                           int& out) {
  const TomlValue* value = ask(key);
  if (value == nullptr) {
    return;
  }
  const auto* text = value->as<std::string>();
  const std::string given = text == nullptr ? "" : *text;
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
  for (const auto& [key, value] : *table_) {
    if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
      findings_.push_back({Severity::kError, "unknown-key", "there is no " + fullName(key),
                           placeOf(value), didYouMean(key, known_)});
    }
  }
}

void rejectUnknownSections(const TomlValue::Table& root, const std::vector<std::string>& known,
                           const std::string& file, Findings& findings) {
  for (const auto& [key, value] : root) {
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      findings.push_back({Severity::kError,
                          "unknown-key",
                          value.as<TomlValue::Table>() != nullptr
                              ? "there is no table [" + key + "]"
                              : "\"" + key + "\" stands outside of every table",
                          {file, value.line},
                          didYouMean(key, known)});
    }
  }
}

}  // namespace quillory::pack
