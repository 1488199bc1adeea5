#include "java/launch_start.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>

#include "java/bundle_loader.h"
#include "java/jni_launch.h"
#include "java/jre_bundle.h"
#include "java/trial_end.h"
#include "support/clock.h"
#include "support/log.h"
#include "support/program.h"
#include "support/start_end.h"

namespace quillory {
namespace {

/// What shells add to the number of a signal.
constexpr int kSignalled = 128;

/// The status of a `java` whose main method has thrown.
constexpr int kStatusOfThrower = 1;
/// Who throws in so long has not begun.
constexpr std::uint64_t kMillisOfBeginning = 1500;

/// Runs the process behind the closed log file.
ProgramResult run(const LaunchCommand& command, bool waits) {
  closeLoggedFile();
  ProgramOptions options;
  options.waits = waits;
  ProgramResult program = runProgram(processArguments(command), options);
  if (!program.started) logMessage("Launch Error %d.\n", program.error);
  return program;
}

/// Makes this process what the application is to find; a process that is started inherits it.
void enterSurroundings(const LaunchCommand& command) {
  for (const std::string& variable : command.environment) {
    const std::size_t equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(), variable.c_str() + equals + 1, 1);
    logMessage("[Extractor] Environment: %s\n", variable.c_str());
  }
  if (command.directory.empty()) return;
  if (chdir(command.directory.c_str()) == 0) {
    logMessage("[Extractor] Working directory: %s\n", command.directory.c_str());
  } else {
    const int error = errno;
    logMessage("[Extractor] The working directory stays, because %s cannot be entered: %s\n",
               command.directory.c_str(), std::strerror(error));
  }
}

int launchInProcess(const std::string& mainClass, const std::string& jreHome,
                    const LaunchCommand& command) {
  logMessage("[Extractor] Force spawn is %d so attempting to launch via JNI\n", 0);
  logStartSection("JNI Launch\n");
  const int result = runInThisProcess({.mainClass = mainClass,
                                       .jreHome = jreHome,
                                       .jvmOptions = command.jvmOptions,
                                       .classPath = command.classPath,
                                       .arguments = command.applicationArguments,
                                       .tryFile = command.tryFile});
  logMessage("[Extractor] Return code for JNI launch was %d\n", result);
  logEndSection("JNI Launch\n");
  return result;
}

/// What a shell would say of the end; nothing for one by a signal that is no sign of the user's,
/// after which a process has nothing to say either.
std::optional<int> statusOf(const ProgramResult& program) {
  if (program.exited) return program.status;
  const bool isOfUser =
      program.signal == SIGHUP || program.signal == SIGINT || program.signal == SIGTERM;
  if (isOfUser) return kSignalled + program.signal;
  return std::nullopt;
}

/// Waits for the end of the process as long as one that comes is a failure of the start.
void lookForEarlyEnd(ProgramResult& program) {
  constexpr std::uint64_t kMillisBetweenLooks = 20;
  for (std::uint64_t waited = 0; waited < kMillisOfBeginning; waited += kMillisBetweenLooks) {
    siginfo_t end{};
    const int asked =
        waitid(P_PID, static_cast<id_t>(program.process), &end, WEXITED | WNOHANG | WNOWAIT);
    if (asked != 0) return;
    if (end.si_pid == program.process) return waitForProgram(program);
    timeCalls.sleepMicros(kMillisBetweenLooks * 1000);
  }
}

/// Starts the process; where its end is of use to somebody, waits for it.
std::int64_t spawn(const LaunchCommand& command) {
  const std::uint64_t begin = timeCalls.nowMillis();
  // A JVM that could not be created here cannot be there either, and has said why.
  const StartStage failure =
      stageOfStart() == StartStage::kCreatingJvm ? StartStage::kCreatingJvm : StartStage::kFailed;
  ProgramResult program = run(command, !command.tryFile.empty());
  if (!program.started) return program.error;
  if (command.tryFile.empty() && areFailuresTold()) lookForEarlyEnd(program);
  const std::optional<int> status = statusOf(program);
  if (status) noteEnd(command.tryFile, *status);
  noteStage(status == kStatusOfThrower && timeCalls.nowMillis() - begin <= kMillisOfBeginning
                ? failure
                : StartStage::kRunning);
  return program.error;
}

}  // namespace

std::int64_t startApplication(const std::string& mainClass, const std::string& jreFolder,
                              bool isSpawnForced, const LaunchCommand& command) {
  logMessage("[Extractor] JRE folder is %s\n", jreFolder.c_str());
  enterSurroundings(command);
  const std::string bundle = jreFolder + kBundleSuffix;
  loadOSXBundle(bundle.c_str());
  const std::string jreHome = bundle + "/Contents/Home";
  logMessage("[Extractor] Adjusted JRE folder is %s\n", jreHome.c_str());
  if (!isSpawnForced) {
    if (launchInProcess(mainClass, jreHome, command) == 0) return 0;
    logMessage("[Extractor] JNI launch failed. Attempting legacy spawn instead\n");
  }
  logMessage("[Extractor] Attempting spawn launch\n");
  logStartSection("Spawn launch\n");
  return spawn(command);
}

std::int64_t runCompatibilityClass(const LaunchCommand& command) {
  // -1 also for one that a signal ended: only a class that says so is compatible.
  return run(command, true).status;
}

}  // namespace quillory
