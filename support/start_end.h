// How far a start has come and what is known of its failure, for the one who tells its user when
// the process ends (launcher/failure_report.h). Noted by the floors that know it; where nobody
// tells, noting costs nothing. Any thread; nothing here fails.
#pragma once
#include <string>
#include <string_view>

namespace quillory {

enum class StartStage {
  kPreparing,    ///< until there is a JVM: an end here is a failure
  kCreatingJvm,  ///< the same; the JVM itself may end the process
  kRunning,      ///< the application's main class runs: how it ends is its own matter
  kFailed,       ///< the application could not begin
  kOver,         ///< in order, or as the user wanted it
};

/// From now on failures are told: what is noted is kept. Nothing has been said of a failure yet.
void tellOfFailures();
bool areFailuresTold() noexcept;

void noteStage(StartStage stage) noexcept;
StartStage stageOfStart() noexcept;

/// More of what the JVM or the application has said of its failure; behind 16 KiB it is dropped.
void noteCause(std::string_view text);
std::string causeOfFailure();

/// The log of this start; "" before there is one.
void noteLogFile(const std::string& path);
std::string logFileOfStart();

/// Where the updater writes why it cannot start the application, in this start; "" before that.
void noteFailureFile(const std::string& path);
std::string failureFile();

}  // namespace quillory
