#include "launcher/failure_report.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <mutex>
#include <string_view>

#include "support/log.h"
#include "support/plain_file.h"
#include "support/platform.h"
#include "support/start_end.h"
#include "ui/splash.h"

namespace quillory {
namespace {

constexpr std::size_t kMostOfAFile = 16 * 1024;
constexpr std::size_t kLinesKept = 4;

/// The last lines of the log that say something, in a ring.
class LastLines {
 public:
  void add(std::string_view line) {
    // Behind the milliseconds.
    const std::size_t text = line.find(' ');
    line.remove_prefix(text == std::string_view::npos ? 0 : line.find_first_not_of(' ', text));
    while (line.ends_with('\n')) line.remove_suffix(1);
    if (line.find_first_not_of("+-* ") == std::string_view::npos) return;
    const std::lock_guard lock(mutex_);
    lines_[next_++ % kLinesKept] = line;
  }
  std::string text() {
    const std::lock_guard lock(mutex_);
    std::string all;
    for (std::size_t i = 0; i < kLinesKept; ++i) {
      const std::string& line = lines_[(next_ + i) % kLinesKept];
      if (!line.empty()) all += line + '\n';
    }
    return all;
  }

 private:
  std::mutex mutex_;
  std::array<std::string, kLinesKept> lines_;
  std::size_t next_ = 0;
};

struct Reporter {
  std::string appName;
  LastLines lines;
  void (*showBefore)(const char* line, std::size_t length) = nullptr;
};
// Never destroyed: it is at work while the process ends.
Reporter* reporter = nullptr;

void keepAndShow(const char* line, std::size_t length) {
  reporter->showBefore(line, length);
  reporter->lines.add({line, length});
}

/// What the updater has left, which is taken away with it.
std::string takeFailureFile() {
  const std::string path = failureFile();
  if (path.empty()) return "";
  const std::string text = readPlainFile(path, kMostOfAFile).value_or("");
  unlink(path.c_str());
  return text;
}

void report() {
  const FailureReport told = reportNow(reporter->appName, reporter->lines.text());
  if (told.sentence.empty()) return;
  // The main thread would wait for itself.
  if (platformCalls.isMainThread()) return;
  splash::cleanup();
  platformCalls.failure.show(
      {.sentence = told.sentence, .cause = told.cause, .logFile = logFileOfStart()});
}

}  // namespace

FailureReport reportNow(const std::string& appName, const std::string& logLines) {
  const std::string ofUpdater = takeFailureFile();
  const StartStage stage = stageOfStart();
  const bool isOfUpdater = stage == StartStage::kRunning || stage == StartStage::kFailed;
  if (isOfUpdater && !ofUpdater.empty()) return {appName + " could not be started.", ofUpdater};
  switch (stage) {
    case StartStage::kOver:
    case StartStage::kRunning:
      return {};
    case StartStage::kFailed:
      return {appName + " ended with an error while it started.", causeOfFailure()};
    case StartStage::kCreatingJvm:
      return {appName + " could not be started, because its Java runtime does not work.",
              causeOfFailure()};
    case StartStage::kPreparing:
      return {appName + " could not be started.", logLines};
  }
  return {};
}

void reportFailuresOf(const std::string& appName) {
  if (reporter != nullptr || !platformCalls.failure.mayShow()) return;
  reporter = new Reporter;
  reporter->appName = appName;
  reporter->showBefore = logCalls.show;
  logCalls.show = keepAndShow;
  tellOfFailures();
  std::atexit(report);
}

}  // namespace quillory
