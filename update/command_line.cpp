#include "update/command_line.h"

#include <algorithm>
#include <charconv>

#include "support/manual_page.h"

namespace quillory::update {
namespace {

constexpr char kPurpose[] =
    "Looks for updates of an installed application, loads them and puts them in their place. A "
    "bundle carries it beside the updater, which starts it; what it does is told in lines on "
    "standard output, which are made for programs.";
constexpr char kRestartText[] = "waits for the end of the process PID, and starts PROGRAM then";
constexpr char kPropertiesText[] = "the launch properties of a start of the application";
constexpr char kOwnFolderText[] =
    "where state, downloads and log are kept, if not in the folder of the installation";
constexpr char kElevateText[] =
    "install only: where only an administrator may write, his rights are asked for";
constexpr char kInstallForAllText[] =
    "installs what is new in the installation that this program lies in, for all its users; run by "
    "its administrator";
constexpr char kProxiesText[] =
    "says which proxies the system's settings name for an address, one a line";
constexpr char kDrawText[] = "install-for-all only: the draw of the user who has been offered it";
constexpr std::size_t kDrawDigits = 32;
constexpr char kInstallForAllName[] = "install-for-all";
constexpr char kSignals[] =
    "SIGTERM and SIGINT cancel a run. What has been loaded stays, and the next run goes on with "
    "it.";

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size() + 1), ' ');
  return text;
}

std::string withArgument(const DescribedCommand& command) {
  return *command.argument == '\0' ? command.name
                                   : std::string(command.name) + ' ' + command.argument;
}

class Parser {
 public:
  explicit Parser(const std::vector<std::string>& arguments) : rest_(arguments) {}

  CommandLine parse() {
    if (rest_.empty()) return mistake("there is no command");
    const std::string name = take();
    if (name == "--help" || name == "-h") line_.kind = CommandLine::Kind::kHelp;
    if (name == "--version") line_.kind = CommandLine::Kind::kVersion;
    if (line_.kind != CommandLine::Kind::kMistake)
      return rest_.empty() ? line_ : mistake("nothing may follow " + name);
    if (name == "restart") return parseRestart();
    if (name == "proxies") return parseProxies();
    if (name == kInstallForAllName) return parseInstallForAll();
    const auto known = std::find_if(kCommands.begin(), kCommands.end(),
                                    [&](const auto& command) { return command.name == name; });
    if (known == kCommands.end()) return mistake("there is no command " + name);
    return parseCommand(*known);
  }

 private:
  std::string take() {
    std::string first = rest_.front();
    rest_.erase(rest_.begin());
    return first;
  }

  CommandLine mistake(const std::string& what) {
    CommandLine line;
    line.mistake = what;
    return line;
  }

  CommandLine parseCommand(const DescribedCommand& command) {
    line_.kind = CommandLine::Kind::kCommand;
    line_.command = command.command;
    while (!rest_.empty()) {
      const std::string next = take();
      const bool isOption = next.starts_with("--");
      if (next == "--elevate" && command.command == Command::kInstall) {
        line_.elevates = true;
        continue;
      }
      if (isOption && rest_.empty()) return mistake(next + " needs a value");
      if (next == "--properties") {
        line_.properties = take();
      } else if (next == "--own-folder") {
        line_.ownFolder = take();
      } else if (isOption || *command.argument == '\0' || !line_.argument.empty()) {
        return mistake(std::string(command.name) + " takes no " + next);
      } else {
        line_.argument = next;
      }
    }
    const bool isOptional = *command.argument == '[';
    if (*command.argument != '\0' && !isOptional && line_.argument.empty())
      return mistake(std::string(command.name) + " needs " + command.argument);
    return line_.properties.empty() ? mistake("--properties is missing") : line_;
  }

  CommandLine parseInstallForAll() {
    line_.kind = CommandLine::Kind::kInstallForAll;
    if (rest_.empty()) return line_;
    if (rest_.size() != 2 || take() != "--draw")
      return mistake("install-for-all takes --draw DRAW and nothing else");
    line_.draw = take();
    const bool isDraw = line_.draw.size() == kDrawDigits &&
                        line_.draw.find_first_not_of("0123456789abcdef") == std::string::npos;
    return isDraw ? line_ : mistake("that is no draw: " + line_.draw);
  }

  CommandLine parseProxies() {
    if (rest_.size() != 1) return mistake("proxies needs URL");
    line_.kind = CommandLine::Kind::kProxies;
    line_.argument = take();
    return line_;
  }

  CommandLine parseRestart() {
    line_.kind = CommandLine::Kind::kRestart;
    if (rest_.size() < 4 || take() != "--wait")
      return mistake("restart needs --wait PID -- PROGRAM");
    const std::string pid = take();
    const auto parsed = std::from_chars(pid.data(), pid.data() + pid.size(), line_.waitFor);
    if (parsed.ptr != pid.data() + pid.size() || line_.waitFor <= 1)
      return mistake("that is no process: " + pid);
    if (take() != "--") return mistake("restart needs --wait PID -- PROGRAM");
    line_.program = rest_;
    if (!line_.program.front().starts_with('/'))
      return mistake("the program to start is no absolute path: " + line_.program.front());
    return line_;
  }

  std::vector<std::string> rest_;
  CommandLine line_;
};

}  // namespace

const std::vector<DescribedCommand> kCommands = {
    {"check", "", "asks the server whether there is a newer release", Command::kCheck},
    {"download", "", "checks, loads and verifies; the release is not yet in its place",
     Command::kDownload},
    {"install", "", "downloads, and puts the release in its place, for the next start",
     Command::kInstall},
    {"background", "", "does what the settings ask for, when it is due", Command::kBackground},
    {"status", "", "says what is known, without asking anybody", Command::kStatus},
    {"skip", "VERSION", "never offers that version in the background", Command::kSkip},
    {"remind-later", "[HOURS]", "offers nothing in the background for that long (24)",
     Command::kRemindLater},
    {"set-channel", "NAME", "asks for another channel from now on", Command::kSetChannel},
};

CommandLine parseCommandLine(const std::vector<std::string>& arguments) {
  return Parser(arguments).parse();
}

std::string help() {
  constexpr std::size_t kWidth = 24;
  std::string text =
      "usage: quillory-update COMMAND --properties FILE [--own-folder DIR] [--elevate]\n"
      "       quillory-update install-for-all [--draw DRAW]\n"
      "       quillory-update proxies URL\n"
      "       quillory-update restart --wait PID -- PROGRAM [ARGUMENT]...\n\n";
  text += std::string(kPurpose) + "\n\n";
  for (const DescribedCommand& command : kCommands)
    text += "  " + padded(withArgument(command), kWidth) + command.text + '\n';
  text += "  " + padded(kInstallForAllName, kWidth) + kInstallForAllText + '\n';
  text += "  " + padded("proxies URL", kWidth) + kProxiesText + '\n';
  text += "  " + padded("restart", kWidth) + kRestartText + "\n\n";
  text += "  " + padded("--properties FILE", kWidth) + kPropertiesText + '\n';
  text += "  " + padded("--own-folder DIR", kWidth) + kOwnFolderText + '\n';
  text += "  " + padded("--elevate", kWidth) + kElevateText + '\n';
  text += "  " + padded("--draw DRAW", kWidth) + kDrawText + "\n\n";
  return text + kSignals + "\n\nexit status: " + kStatuses + '\n';
}

std::string manual() {
  ManualPage page("quillory-update", std::string("quillory-update ") + kProgramVersion,
                  "looks for updates of an installed application");
  page.heading("SYNOPSIS");
  page.literal(kUsage);
  page.heading("DESCRIPTION");
  page.paragraph(kPurpose);
  page.heading("COMMANDS");
  for (const DescribedCommand& command : kCommands) page.item(withArgument(command), command.text);
  page.item(kInstallForAllName, kInstallForAllText);
  page.item("proxies URL", kProxiesText);
  page.item("restart", kRestartText);
  page.heading("OPTIONS");
  page.item("--properties FILE", kPropertiesText);
  page.item("--own-folder DIR", kOwnFolderText);
  page.item("--elevate", kElevateText);
  page.item("--draw DRAW", kDrawText);
  page.heading("SIGNALS");
  page.paragraph(kSignals);
  page.heading("EXIT STATUS");
  page.paragraph(kStatuses);
  page.heading("SEE ALSO");
  page.paragraph("quillory-pack(1)");
  return page.text();
}

}  // namespace quillory::update
