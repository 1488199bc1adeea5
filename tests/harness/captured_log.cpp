#include "tests/harness/captured_log.h"

#include "support/platform.h"

namespace quillory::testing {
namespace {

std::vector<std::string> captured;

}  // namespace

CapturedLog::CapturedLog()
    : sink_(
          platformCalls.systemLog, +[](const char* message) { captured.emplace_back(message); }) {
  captured.clear();
}

CapturedLog::~CapturedLog() { captured.clear(); }

const std::vector<std::string>& CapturedLog::messages() const { return captured; }

std::string CapturedLog::text() const {
  std::string all;
  for (const std::string& message : captured) all += message;
  return all;
}

bool CapturedLog::contains(const std::string& part) const {
  return text().find(part) != std::string::npos;
}

}  // namespace quillory::testing
