// Findings as tests ask about them: by the names of their rules.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "packager/report/findings.h"

namespace quillory::testing {

/// The names of the findings, in order.
inline std::vector<std::string> rulesOf(const pack::Findings& findings) {
  std::vector<std::string> rules;
  for (const pack::Finding& finding : findings) {
    rules.push_back(finding.rule);
  }
  return rules;
}

inline bool hasRule(const pack::Findings& findings, const std::string& rule) {
  return std::any_of(findings.begin(), findings.end(),
                     [&](const pack::Finding& finding) { return finding.rule == rule; });
}

/// The first finding of that rule; a test failure when there is none.
inline pack::Finding findingOf(const pack::Findings& findings, const std::string& rule) {
  for (const pack::Finding& finding : findings) {
    if (finding.rule == rule) {
      return finding;
    }
  }
  ADD_FAILURE() << "no finding " << rule << " among "
                << ::testing::PrintToString(rulesOf(findings));
  return {};
}

}  // namespace quillory::testing
