#include "packager/commands/training_run.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>

#include "packager/bytes/byte_sinks.h"
#include "packager/bytes/work_folder.h"
#include "packager/content/class_list.h"
#include "packager/reading/launch_file_view.h"
#include "packager/report/joined.h"
#include "support/program.h"

namespace quillory::pack {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kLibraryFolder = "native";
// Where Java looks for libraries without an option.
constexpr char kLibraryPath[] = "/usr/java/packages/lib:/usr/lib64:/lib64:/lib:/usr/lib";
constexpr std::string_view kAgentOption = "-Dquillory.agent=";
constexpr std::string_view kUserArguments = "-Dquillory.arguments=user";

// The text behind `option` in one of the launch file's options; "" when none begins with it.
std::string valueBehind(std::string_view option, const LaunchFile& launch) {
  for (const std::string& each : launch.jvmOptions) {
    if (each.starts_with(option)) {
      return each.substr(option.size());
    }
  }
  return "";
}

// What a JVM understands of the options: others are for launcher and updater.
std::vector<std::string> optionsForJava(const LaunchFile& launch) {
  std::vector<std::string> options;
  for (const std::string& each : launch.jvmOptions) {
    if (!each.starts_with("-Dquillory.")) {
      options.push_back(each);
    }
  }
  return options;
}

std::vector<std::string> environmentOf(const LaunchFile& launch) {
  std::vector<std::string> variables;
  for (const std::string& each : launch.jvmOptions) {
    if (each.starts_with(kEnvironmentOption)) {
      variables.push_back(each.substr(std::string_view(kEnvironmentOption).size()));
    }
  }
  return variables;
}

void append(std::vector<std::string>& all, const std::vector<std::string>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

LaunchFile launchFileIn(const std::string& folder) {
  Findings findings;
  RecordInput input(folder + '/' + kLaunchFileName, findings);
  LaunchFile launch = readLaunchFile(input);
  accepted(std::move(findings));
  return launch;
}

void requireGoodEnd(const ProgramResult& run) {
  stopIfInterrupted();
  if (run.status == 0) {
    return;
  }
  const std::string how = run.exited ? "with status " + std::to_string(run.status)
                                     : "by signal " + std::to_string(run.signal);
  throw PackError("the application ended " + how + ", so nothing of it is kept",
                  "see that it runs by itself, and end it as its users do: close its window, or "
                  "choose Quit");
}

}  // namespace

std::vector<std::string> trainingCommand(const LaunchFile& launch,
                                         const UnpackedApplication& application,
                                         const std::string& list, const std::string& properties,
                                         const std::vector<std::string>& arguments) {
  std::vector<std::string> classPath;
  for (const std::string& entry : launch.classPath) {
    classPath.push_back(application.folder + '/' + entry);
  }
  // What it prints is no result of ours.
  std::vector<std::string> command = {"/bin/sh", "-c", "exec \"$@\" >&2", "sh", "/usr/bin/env"};
  append(command, environmentOf(launch));
  append(command, {application.javaHome + "/bin/java", "-XX:DumpLoadedClassList=" + list});
  if (launch.maximumHeap > 0) {
    command.push_back("-Xmx" + std::to_string(launch.maximumHeap) + 'm');
  }
  if (launch.initialHeap > 0) {
    command.push_back("-Xms" + std::to_string(launch.initialHeap) + 'm');
  }
  const fs::path native = fs::path(application.folder) / kLibraryFolder;
  if (fs::is_directory(native)) {
    command.push_back("-Djava.library.path=" + native.string() + ':' + kLibraryPath);
  }
  append(command, optionsForJava(launch));
  const std::string module = valueBehind(kModuleOption, launch);
  if (module.empty()) {
    append(command, {"-cp", joined(classPath, ":"), launch.mainClass});
  } else {
    append(command, {"-p", joined(classPath, ":"), "-m", module + '/' + launch.mainClass});
  }
  if (valueBehind(kUserArguments, launch).empty() &&
      std::find(launch.jvmOptions.begin(), launch.jvmOptions.end(), kUserArguments) ==
          launch.jvmOptions.end()) {
    command.push_back(properties);
  }
  append(command, launch.arguments);
  append(command, arguments);
  return command;
}

std::string trainingFolder(const LaunchFile& launch, const UnpackedApplication& application) {
  const std::string asked = valueBehind(kDirectoryOption, launch);
  const char* home = std::getenv("HOME");
  return asked == "application"               ? application.folder
         : asked == "home" && home != nullptr ? home
                                              : "";
}

std::vector<std::string> trainingRun(const UnpackedApplication& application,
                                     const std::vector<std::string>& arguments,
                                     const std::string& workFolder, Reporter& reporter) {
  const LaunchFile launch = launchFileIn(application.folder);
  if (!valueBehind(kAgentOption, launch).empty()) {
    reporter.line("the agent of its main jar is not started here");
  }
  const std::string list = workFolder + "/loaded.classlist";
  const std::string properties = workFolder + "/launch.properties";
  writeWholeFile(properties, "");
  ProgramOptions options;
  const std::string folder = trainingFolder(launch, application);
  options.directory = folder.empty() ? std::nullopt : std::optional(folder);
  const std::vector<std::string> command =
      trainingCommand(launch, application, list, properties, arguments);
  reporter.detail(joined(command, " "));
  const ProgramResult run = runProgram(command, options);
  if (!run.started) {
    throwFileError(command.at(0), "cannot be started", run.error);
  }
  requireGoodEnd(run);
  const std::vector<std::string> names =
      isFile(list) ? classesOf(application.javaHome, classNamesIn(readWholeFile(list)))
                   : std::vector<std::string>();
  if (names.empty()) {
    throw PackError("Java left no list of the classes that it loaded",
                    "the runtime has to be one of Java 9 or later, with its lib/modules");
  }
  return names;
}

}  // namespace quillory::pack
