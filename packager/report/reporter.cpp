#include "packager/report/reporter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

namespace quillory::pack {
namespace {

constexpr std::size_t kBarWidth = 30;

}  // namespace

Reporter::Reporter(std::ostream& out, std::ostream& err, ReporterOptions options)
    : out_(out),
      err_(err),
      options_(options),
      values_(std::make_unique<nlohmann::ordered_json>(nlohmann::ordered_json::object())) {}

Reporter::~Reporter() = default;

void Reporter::result(const std::string& text) {
  if (!options_.json) {
    endProgress();
    out_ << text << std::endl;
  }
}

void Reporter::value(const std::string& name, const std::string& text) { (*values_)[name] = text; }

void Reporter::value(const std::string& name, std::uint64_t number) { (*values_)[name] = number; }

void Reporter::value(const std::string& name, bool flag) { (*values_)[name] = flag; }

void Reporter::value(const std::string& name, const nlohmann::ordered_json& value) {
  (*values_)[name] = value;
}

void Reporter::finish(const std::string& command, int status) {
  if (!options_.json) {
    return;
  }
  nlohmann::ordered_json document = {{"command", command}, {"status", status}};
  document.update(*values_);
  document["findings"] = nlohmann::ordered_json::array();
  for (const Finding& finding : kept_) {
    document["findings"].push_back({{"severity", asText(finding.severity)},
                                    {"rule", finding.rule},
                                    {"what", finding.what},
                                    {"file", finding.place.file},
                                    {"line", finding.place.line},
                                    {"advice", finding.advice}});
  }
  // File names need not be UTF-8; what is not becomes a replacement character.
  out_ << document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
       << std::endl;
}

void Reporter::line(const std::string& text) {
  if (options_.verbosity != Verbosity::kQuiet && !options_.json) {
    endProgress();
    err_ << text << '\n';
  }
}

bool Reporter::showsDetail() const {
  return options_.verbosity == Verbosity::kVerbose && !options_.json;
}

void Reporter::detail(const std::string& text) {
  if (showsDetail()) {
    line(text);
  }
}

void Reporter::finding(const Finding& finding) {
  kept_.push_back(finding);
  const bool shown =
      finding.severity == Severity::kError ||
      (finding.severity == Severity::kWarning && options_.verbosity != Verbosity::kQuiet) ||
      options_.verbosity == Verbosity::kVerbose;
  if (shown && !options_.json) {
    endProgress();
    err_ << asText(finding) << '\n';
  }
}

void Reporter::findings(const Findings& all) {
  for (const Finding& one : all) {
    finding(one);
  }
}

void Reporter::progress(const std::string& what, const Progress& progress) {
  if (!options_.terminal || options_.verbosity == Verbosity::kQuiet || options_.json ||
      progress.total == 0) {
    return;
  }
  const std::uint64_t done = std::min<std::uint64_t>(progress.done, progress.total);
  const auto filled = static_cast<std::size_t>(done * kBarWidth / progress.total);
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::string line = '\r' + what + " [" + bar + "] " + std::to_string(done * 100 / progress.total) +
                     "% of " + readableSize(progress.total);
  // The end of a longer text may stand behind it.
  if (!progress.rest.empty()) line += ", " + progress.rest + "\033[K";
  // At once: a terminal shows what has come, also half a line.
  err_ << line << std::flush;
  barShown_ = true;
}

void Reporter::endProgress() {
  if (barShown_) {
    err_ << "\r\033[K" << std::flush;
    barShown_ = false;
  }
}

std::string readableSize(std::uint64_t bytes) {
  if (bytes < 1000) {
    return std::to_string(bytes) + " bytes";
  }
  static constexpr std::array kUnits = {"kB", "MB", "GB", "TB", "PB", "EB"};
  double value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (value >= 999.95 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", value, kUnits[unit]);
  return text.data();
}

}  // namespace quillory::pack
