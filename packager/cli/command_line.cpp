#include "packager/cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <map>
#include <ostream>
#include <utility>

#include "packager/cli/completion.h"
#include "packager/commands/commands.h"
#include "packager/reading/target.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/joined.h"
#include "packager/report/nearest_name.h"

namespace quillory::pack {
namespace {

constexpr char kVersion[] = "quillory-pack 1.0";

constexpr char kFooter[] =
    "Ship an application in three commands:\n"
    "  quillory-pack init      # writes quillory.toml for the jars that are here\n"
    "  quillory-pack keygen    # makes signing.pem; keep it, and keep it secret\n"
    "  quillory-pack bundle    # makes dist/<App>.app and dist/release/\n"
    "\n"
    "exit status: 0 done; 1 it could not be done, or what was checked is not good;\n"
    "  2 the command line makes no sense; 3 the configuration or the content has errors";

// Builds the commands; the one that was chosen leaves its function in `run_`.
class CommandLine {
 public:
  CommandLine() : app_("Packs Java applications for the launcher.", "quillory-pack") {
    app_.require_subcommand(1);
    app_.set_version_flag("--version", kVersion, "the version of this program");
    app_.footer(kFooter);
    addInit();
    addKeygen();
    addBundle();
    addInspect();
    addVerify();
    addExtract();
    addSet();
    addDoctor();
    addCompletion();
  }

  CLI::App& app() { return app_; }
  Request& request() { return request_; }
  Command command() const { return command_; }

  std::vector<CommandNames> names() const {
    std::vector<CommandNames> all;
    for (const CLI::App* sub : app_.get_subcommands({})) {
      CommandNames names{sub->get_name(), sub->get_description(), {}, {}};
      const auto values = values_.find(sub);
      if (values != values_.end()) {
        names.values = values->second;
      }
      for (const CLI::Option* option : sub->get_options()) {
        for (const std::string& name : option->get_lnames()) {
          names.options.push_back("--" + name);
        }
        for (const std::string& name : option->get_snames()) {
          names.options.push_back('-' + name);
        }
      }
      all.push_back(std::move(names));
    }
    return all;
  }

 private:
  CLI::App* add(const char* name, const char* description, const char* example, Command run) {
    CLI::App* sub = app_.add_subcommand(name, description);
    sub->footer(std::string("example:\n  ") + example);
    sub->add_flag_callback(
        "-q,--quiet", [this] { request_.reporter.verbosity = Verbosity::kQuiet; },
        "only results and errors");
    sub->add_flag_callback(
        "-v,--verbose", [this] { request_.reporter.verbosity = Verbosity::kVerbose; },
        "everything that is worth knowing");
    sub->add_flag("--json", request_.reporter.json,
                  "one JSON document on standard output, with all findings");
    sub->callback([this, run] { command_ = run; });
    return sub;
  }

  CLI::Option* file(CLI::App* sub, const char* name, const char* description,
                    const char* standard = nullptr) {
    CLI::Option* option = sub->add_option_function<std::string>(
        name, [this](const std::string& value) { request_.file = value; }, description);
    if (standard == nullptr) {
      return option->required();
    }
    // Given only when this command runs: the field is shared.
    sub->parse_complete_callback([this, standard] {
      if (request_.file.empty()) {
        request_.file = standard;
      }
    });
    return option->default_str(standard);
  }

  // An option whose values have names; a wrong one is answered with the nearest.
  void oneOf(CLI::App* sub, const std::string& name, std::string& out,
             const std::string& description, const std::vector<std::string>& values) {
    const std::string all = joined(values, ", ");
    const auto check = [values, all](const std::string& given) -> std::string {
      if (std::find(values.begin(), values.end(), given) != values.end()) {
        return "";
      }
      const std::string nearest = nearestName(given, values);
      return '"' + given + "\" is none of " + all +
             (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?");
    };
    sub->add_option(name, out, description + ": " + all)->check(check);
    values_[sub][name] = values;
  }

  void addInit() {
    CLI::App* sub = add("init", "writes a commented quillory.toml for the jars it finds",
                        "quillory-pack init", runInit);
    file(sub, "FILE", "the configuration to write", "quillory.toml");
  }

  void addKeygen() {
    CLI::App* sub = add("keygen", "makes the key that signs archives",
                        "quillory-pack keygen ~/keys/myapp.pem", runKeygen);
    file(sub, "FILE", "where the key goes; it must not exist yet", "signing.pem");
    sub->add_option("--bits", request_.bits, "its size: 2048, 3072 or 4096")
        ->check(CLI::IsMember({2048, 3072, 4096}))
        ->capture_default_str();
  }

  void addBundle() {
    CLI::App* sub =
        add("bundle", "makes dist/<App>.app, and dist/release/ for the update URL",
            "quillory-pack bundle --target macos --output /tmp/out myapp.toml", runBundle);
    file(sub, "CONFIG", "the configuration", "quillory.toml");
    sub->add_option("-o,--output", request_.output, "folder for the results, instead of dist");
    sub->add_option("--compression", request_.compression, "0 (fast) to 9 (small)")
        ->check(CLI::Range(0, 9));
    oneOf(sub, "--target", request_.target, "the system that it is for, instead of this one",
          targetNames());
    sub->add_flag("--unsigned", request_.unsignedArchives,
                  "pack without a key: whoever can change a download can run anything");
  }

  void addInspect() {
    CLI::App* sub = add("inspect", "shows what is in a bundle, or in any file of ours",
                        "quillory-pack inspect \"dist/My App.app\"", runInspect);
    file(sub, "PATH", "a bundle, tail, parameters file, archive, launch file, key ...");
    std::vector<std::string> kinds = fileKindNames();
    kinds.erase(kinds.begin());
    oneOf(sub, "--as", request_.kind, "what it is, where that is not plain", kinds);
  }

  void addVerify() {
    CLI::App* sub = add("verify", "checks structure and signatures as a client would",
                        "quillory-pack verify --key mykey.pem dist/release/*.p2.l2", runVerify);
    sub->add_option("PATH", request_.texts, "bundles, tails and archives")->required();
    sub->add_option("--key", request_.key,
                    "a PEM file with either half of the key; a bundle has its own");
  }

  void addExtract() {
    CLI::App* sub = add("extract", "extracts an archive as the launcher does",
                        "quillory-pack extract --key mykey.pem App.p2.l2 /tmp/app", runExtract);
    file(sub, "ARCHIVE", "a .p2 or .p2.l2 file; it stays");
    sub->add_option("FOLDER", request_.output, "a new or an empty folder")->required();
    sub->add_option("--key", request_.key, "check the signature first; without it, it is not");
  }

  void addSet() {
    CLI::App* sub =
        add("set", "changes dynamic parameters without touching what is code-signed",
            "quillory-pack set \"dist/My App.app\" update_url=https://example.com/u/", runSet);
    file(sub, "BUNDLE", "a bundle, or its parameters file");
    sub->add_option("NAME=VALUE", request_.texts, "parameters to set");
    sub->add_option("--unset", request_.removed, "a parameter to take away")
        ->allow_extra_args(false);
  }

  void addDoctor() {
    CLI::App* sub = add("doctor", "tells what would go wrong on the user's machine, and why",
                        "quillory-pack doctor \"dist/My App.app\"", runDoctor);
    file(sub, "BUNDLE", "the bundle to look at");
  }

  void addCompletion() {
    CLI::App* sub = add("completion", "prints a completion script for a shell",
                        "source <(quillory-pack completion bash)", runCompletion);
    sub->add_option("SHELL", request_.kind, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    sub->callback([this] {
      command_ = runCompletion;
      request_.texts = {completionScript(request_.kind, names())};
    });
  }

  CLI::App app_;
  std::map<const CLI::App*, std::map<std::string, std::vector<std::string>>> values_;
  Request request_;
  Command command_ = nullptr;
};

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

// CLI11 says that an argument was not expected; people want to know which command they meant.
int explainWrongUse(CommandLine& line, const CLI::ParseError& e,
                    const std::vector<std::string>& arguments, std::ostream& out,
                    std::ostream& err) {
  const std::vector<CommandNames> commands = line.names();
  const bool isCommand = !arguments.empty() &&
                         std::any_of(commands.begin(), commands.end(),
                                     [&](const CommandNames& c) { return c.name == arguments[0]; });
  if (arguments.empty()) {
    err << line.app().help();
    return kWrongUse;
  }
  if (e.get_exit_code() == 0) {
    return line.app().exit(e, out, err);
  }
  if (!isCommand && !arguments[0].starts_with('-')) {
    std::vector<std::string> names;
    for (const CommandNames& command : commands) {
      names.push_back(command.name);
    }
    const std::string nearest = nearestName(arguments[0], names);
    return rejectUse("", "there is no command \"" + arguments[0] + '"',
                     nearest.empty() ? "quillory-pack --help lists the commands"
                                     : "did you mean \"" + nearest + "\"?",
                     arguments, out, err);
  }
  const std::string command = isCommand ? arguments[0] : "";
  return rejectUse(command, e.what(),
                   "quillory-pack " + command + (isCommand ? " " : "") + "--help explains",
                   arguments, out, err);
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                   bool terminal) {
  CommandLine line;
  try {
    line.app().parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::ParseError& e) {
    return explainWrongUse(line, e, arguments, out, err);
  }
  Request& request = line.request();
  request.reporter.terminal = terminal;
  Reporter reporter(out, err, request.reporter);
  int status = kFailed;
  try {
    status = line.command()(request, reporter);
  } catch (const RejectedInput& e) {
    reporter.findings(e.findings());
    status = kRejectedInput;
  } catch (const PackError& e) {
    reporter.finding(e.finding());
  } catch (const std::filesystem::filesystem_error& e) {
    reporter.finding({Severity::kError, "", e.code().message(), {e.path1().string(), 0}, ""});
  } catch (const std::exception& e) {
    reporter.finding({Severity::kError, "", e.what(), {}, ""});
  }
  reporter.finish(arguments[0], status);
  return status;
}

}  // namespace quillory::pack
