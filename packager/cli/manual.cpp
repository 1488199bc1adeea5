#include "packager/cli/manual.h"

#include "packager/cli/program.h"
#include "packager/report/exit_statuses.h"
#include "packager/report/joined.h"
#include "support/manual_page.h"

namespace quillory::pack {
namespace {

bool isSwitch(const Argument& argument) { return std::holds_alternative<bool*>(argument.into); }

bool isNumber(const Argument& argument) {
  return std::holds_alternative<int*>(argument.into) ||
         std::holds_alternative<std::optional<int>*>(argument.into);
}

bool isRepeated(const Argument& argument) {
  return std::holds_alternative<std::vector<std::string>*>(argument.into);
}

// "quillory-pack extract [OPTION]... ARCHIVE FOLDER"
std::string synopsisOf(const Command& command) {
  std::string line = std::string(kProgramName) + ' ' + command.name + " [OPTION]...";
  for (const Argument& argument : command.arguments) {
    if (!isOption(argument)) {
      const std::string name = argument.name + (isRepeated(argument) ? "..." : "");
      line += argument.isRequired ? ' ' + name : " [" + name + ']';
    }
  }
  return line + (command.behind.name.empty() ? "" : " [-- " + command.behind.name + "...]");
}

void explain(ManualPage& page, const Argument& argument) {
  std::string name = joined(namesOf(argument), ", ");
  std::string text = argument.description;
  if (isOption(argument)) {
    name += isSwitch(argument) ? "" : isNumber(argument) ? " NUMBER" : " TEXT";
    text += argument.choices.empty() ? "" : ": " + joined(argument.choices, ", ");
  }
  if (const std::string standard = defaultOf(argument); !standard.empty()) {
    text += " (without it, " + standard + ')';
  }
  page.item(name, text);
}

void explain(ManualPage& page, const Command& command) {
  page.subheading(command.name);
  page.literal(synopsisOf(command));
  page.paragraph(command.description);
  for (const Argument& argument : command.arguments) {
    explain(page, argument);
  }
  if (!command.behind.name.empty()) {
    explain(page, command.behind);
  }
  page.paragraph("Example:");
  page.literal(command.example);
}

// "Packs Java applications." as what stands behind a name and a dash.
std::string purpose() {
  std::string text = kProgramDescription;
  text.front() = static_cast<char>(text.front() - 'A' + 'a');
  text.pop_back();
  return text;
}

}  // namespace

std::string manualPage(const std::vector<Command>& commands, const std::vector<Argument>& common) {
  ManualPage page(kProgramName, kProgramVersion, purpose());
  page.heading("SYNOPSIS");
  page.literal(std::string(kProgramName) + " COMMAND [ARGUMENT]...\n" + kProgramName +
               " [COMMAND] --help\n" + kProgramName + " --version");
  page.heading("DESCRIPTION");
  page.paragraph(
      "Makes what the launcher reads, from one file of settings, quillory.toml: the bundle that "
      "users start, and the files that an update URL serves.");
  page.literal(kProgramSteps);
  page.heading("COMMANDS");
  for (const Command& command : commands) {
    explain(page, command);
  }
  page.heading("OPTIONS OF EVERY COMMAND");
  explain(page, helpArgument());
  for (const Argument& argument : common) {
    explain(page, argument);
  }
  page.heading("EXIT STATUS");
  page.paragraph(kProgramStatuses);
  page.heading("SEE ALSO");
  page.paragraph(
      "lzma64(1), and docs/packaging.md among the documents that are installed with it.");
  return page.text();
}

Command manualCommand() {
  return {"manual",
          "prints this program's manual page",
          "quillory-pack manual | man -l -",
          {},
          [](Reporter& reporter) {
            TalkOptions talk;
            reporter.result(manualPage(allCommands(), talkArguments(talk)));
            return kDone;
          }};
}

}  // namespace quillory::pack
