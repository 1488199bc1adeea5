#include "packager/report/findings.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quillory::pack {

bool hasErrors(const Findings& findings) {
  return std::any_of(findings.begin(), findings.end(),
                     [](const Finding& f) { return f.severity == Severity::kError; });
}

void append(Findings& findings, const Findings& more) {
  findings.insert(findings.end(), more.begin(), more.end());
}

const char* asText(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kWarning:
      return "warning";
    case Severity::kError:
      break;
  }
  return "error";
}

std::string asText(const Place& place) {
  return place.line == 0 ? place.file : place.file + ":" + std::to_string(place.line);
}

std::string asText(const Finding& finding) {
  std::string text = asText(finding.place);
  if (!text.empty()) {
    text += ": ";
  }
  text += std::string(asText(finding.severity)) + ": " + finding.what;
  if (!finding.rule.empty()) {
    text += " [" + finding.rule + "]";
  }
  if (!finding.advice.empty()) {
    text += "\n  -> " + finding.advice;
  }
  return text;
}

PackError::PackError(const std::string& what, std::string advice, Place place)
    : std::runtime_error(what), advice_(std::move(advice)), place_(std::move(place)) {}

Finding PackError::finding() const { return {Severity::kError, "", what(), place_, advice_}; }

RejectedInput::RejectedInput(Findings findings)
    : std::runtime_error("the configuration or the content cannot be packed"),
      findings_(std::move(findings)) {}

Findings accepted(Findings findings) {
  if (hasErrors(findings)) {
    throw RejectedInput(std::move(findings));
  }
  return findings;
}

void throwFileError(const std::string& file, const char* what, int number,
                    const std::string& advice) {
  throw PackError(std::string(what) + ": " + std::strerror(number), advice, {file, 0});
}

}  // namespace quillory::pack
