#include "packager/cli/command_line.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <new>
#include <ostream>

#include "packager/cli/argument_parser.h"
#include "packager/cli/program.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/nearest_name.h"

namespace quillory::pack {
namespace {

// What is wrong with a command line, as text or as the document that was asked for.
int rejectUse(const std::string& command, const std::string& what, const std::string& advice,
              const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
  if (std::find(arguments.begin(), arguments.end(), "--json") == arguments.end()) {
    err << "error: " << what << "\n  -> " << advice << '\n';
    return kWrongUse;
  }
  Reporter reporter(out, err, {Verbosity::kNormal, true, false});
  reporter.finding({Severity::kError, "", what, {}, advice});
  reporter.finish(command, kWrongUse);
  return kWrongUse;
}

// The parser says that an argument was not expected; people want to know which command they meant.
int explainWrongUse(const std::vector<Command>& commands, const std::string& mistake,
                    const std::vector<std::string>& arguments, std::ostream& out,
                    std::ostream& err) {
  std::vector<std::string> names;
  for (const Command& command : commands) {
    names.push_back(command.name);
  }
  const bool isCommand = std::find(names.begin(), names.end(), arguments[0]) != names.end();
  if (!isCommand && !arguments[0].starts_with('-')) {
    const std::string nearest = nearestName(arguments[0], names);
    return rejectUse("", "there is no command \"" + arguments[0] + '"',
                     nearest.empty() ? "quillory-pack --help lists the commands"
                                     : "did you mean \"" + nearest + "\"?",
                     arguments, out, err);
  }
  const std::string command = isCommand ? arguments[0] : "";
  return rejectUse(command, mistake,
                   "quillory-pack " + command + (isCommand ? " " : "") + "--help explains",
                   arguments, out, err);
}

ReporterOptions reporterOptions(const TalkOptions& talk, bool terminal) {
  const Verbosity verbosity = talk.isVerbose ? Verbosity::kVerbose
                              : talk.isQuiet ? Verbosity::kQuiet
                                             : Verbosity::kNormal;
  return {verbosity, talk.isJson, terminal};
}

// What a command throws is reported, and gives its status.
int runCommand(const Command& command, Reporter& reporter) {
  try {
    return command.run(reporter);
  } catch (const RejectedInput& e) {
    reporter.findings(e.findings());
    return kRejectedInput;
  } catch (const PackError& e) {
    reporter.finding(e.finding());
  } catch (const std::filesystem::filesystem_error& e) {
    reporter.finding({Severity::kError, "", e.code().message(), {e.path1().string(), 0}, ""});
  } catch (const std::bad_alloc&) {
    reporter.finding({Severity::kError, "", "there is not enough memory for this", {}, ""});
  } catch (const std::exception& e) {
    reporter.finding({Severity::kError, "", e.what(), {}, ""});
  }
  return kFailed;
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   bool terminal) {
  const std::vector<Command> commands = allCommands();
  TalkOptions talk;
  const std::vector<Argument> common = talkArguments(talk);
  if (arguments.empty()) {
    err << programHelp(commands, common);
    return kWrongUse;
  }
  const ParsedLine line = parseArguments(commands, common, arguments);
  if (!line.mistake.empty()) {
    return explainWrongUse(commands, line.mistake, arguments, out, err);
  }
  if (line.command == nullptr) {
    out << line.text;
    return kDone;
  }
  Reporter reporter(out, err, reporterOptions(talk, terminal));
  const int status = runCommand(*line.command, reporter);
  reporter.finish(line.command->name, status);
  return status;
}

}  // namespace quillory::pack
