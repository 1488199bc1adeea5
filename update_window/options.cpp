#include "update_window/options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include "support/plain_file.h"

namespace quillory::window {
namespace {

constexpr int kMostSeconds = 3600;
constexpr std::size_t kMaxProperties = std::size_t{4} << 20;
constexpr std::string_view kNameKey = "qystat_app_name";

bool parseSeconds(const std::string& text, int& seconds) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  return error == std::errc() && end == text.data() + text.size() && seconds >= 1 &&
         seconds <= kMostSeconds;
}

/// The text before the next zero byte, which is taken away with it.
std::string_view takeText(std::string_view& bytes) {
  const std::size_t end = std::min(bytes.find('\0'), bytes.size());
  const std::string_view text = bytes.substr(0, end);
  bytes.remove_prefix(std::min(end + 1, bytes.size()));
  return text;
}

}  // namespace

std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string& why) {
  Options options;
  static constexpr struct {
    std::string_view name;
    Occasion occasion;
  } kOccasions[] = {
      {"--first", Occasion::kFirst}, {"--update", Occasion::kUpdate}, {"--ask", Occasion::kAsk}};
  bool isOccasionGiven = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& name = arguments[i];
    if (name == "--help") return why.clear(), std::nullopt;
    const auto* occasion = std::ranges::find(kOccasions, std::string_view(name),
                                             [](const auto& one) { return one.name; });
    if (occasion != std::end(kOccasions)) {
      options.occasion = occasion->occasion;
      isOccasionGiven = true;
      continue;
    }
    const bool isKnown = name == "--at-most" || name == "--properties" || name == "--own-folder";
    if (!isKnown || i + 1 == arguments.size()) {
      why = isKnown ? name + " needs a value" : "unknown: " + name;
      return std::nullopt;
    }
    const std::string& value = arguments[++i];
    if (name == "--properties") options.properties = value;
    if (name == "--own-folder") options.ownFolder = value;
    if (name == "--at-most" && !parseSeconds(value, options.atMostSeconds)) {
      why = "that is no number of seconds: " + value;
      return std::nullopt;
    }
  }
  if (isOccasionGiven && !options.properties.empty()) return options;
  why = isOccasionGiven ? "--properties is missing" : "--first, --update or --ask is missing";
  return std::nullopt;
}

const char* helpText() {
  return "usage: quillory-update-window --first|--update|--ask [--at-most SECONDS]\n"
         "                              --properties FILE [--own-folder DIR]\n\n"
         "Runs the quillory-update that lies beside it, and shows in a window how far it is; "
         "without a\n"
         "display it tells that on standard error. The updater starts it.\n\n"
         "  --first             there is no version yet that could be started without it\n"
         "  --update            there is one\n"
         "  --ask               it runs: asks whether what is offered shall be loaded, and does "
         "it\n"
         "  --at-most SECONDS   ends then; the update goes on by itself\n"
         "  --properties FILE   the launch properties of a start of the application\n"
         "  --own-folder DIR    as for quillory-update\n\n"
         "exit status: 0 done, 1 failed, 2 wrong usage, 3 switched off, 4 an administrator is "
         "needed,\n"
         "5 cancelled, 6 the seconds are over\n";
}

std::vector<std::string> commandFor(const Options& options, const std::string& program,
                                    const std::vector<std::string>& words) {
  std::vector<std::string> command = {program};
  command.insert(command.end(), words.begin(), words.end());
  command.insert(command.end(), {"--properties", options.properties});
  if (!options.ownFolder.empty()) {
    command.emplace_back("--own-folder");
    command.push_back(options.ownFolder);
  }
  return command;
}

std::string appNameIn(const std::string& propertiesFile) {
  const std::string content = readPlainFile(propertiesFile, kMaxProperties).value_or("");
  std::string name;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view key = takeText(rest);
    const std::string_view value = takeText(rest);
    if (key == kNameKey) name = value;
  }
  return name.empty() ? "the application" : name;
}

}  // namespace quillory::window
