#include "packager/content/start_command.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <map>
#include <string_view>
#include <utility>

namespace quillory::pack {
namespace {

using Words = std::vector<std::string>;

// Options whose value is the next word: those that init has no use for, and those that Java takes
// with a "=" as well.
constexpr std::array kPathOptions = {"-cp", "-classpath",    "--class-path",
                                     "-p",  "--module-path", "--upgrade-module-path"};
constexpr std::array kSpacedOptions = {"--add-exports", "--add-opens", "--add-reads",
                                       "--add-modules", "--enable-native-access"};

template <std::size_t N>
bool isAmong(const std::array<const char*, N>& all, const std::string& word) {
  return std::find(all.begin(), all.end(), word) != all.end();
}

// Takes the characters of a script one after another, and keeps the commands found so far.
class ScriptReader {
 public:
  std::vector<Words> read(const std::string& text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
      const char c = text[at];
      if (c == '\\' && quote_ != '\'' && at + 1 < text.size()) {
        takeEscaped(text[++at]);
      } else if (quote_ != '\0') {
        takeQuoted(c);
      } else if (c == '#' && !isInWord_) {
        at = std::min(text.find('\n', at), text.size()) - 1;
      } else {
        takePlain(c);
      }
    }
    endCommand();
    return std::move(commands_);
  }

 private:
  void takeEscaped(char c) {
    if (c == '\n') return;  // the command goes on
    word_ += c;
    isInWord_ = true;
  }
  void takeQuoted(char c) {
    if (c == quote_) {
      quote_ = '\0';
    } else {
      word_ += c;
    }
  }
  void takePlain(char c) {
    if (c == '\'' || c == '"') {
      quote_ = c;
      isInWord_ = true;
    } else if (c == '\n' || c == ';' || c == '&' || c == '|' || c == '(' || c == ')') {
      endCommand();
    } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
      endWord();
    } else {
      word_ += c;
      isInWord_ = true;
    }
  }
  void endWord() {
    if (isInWord_) words_.push_back(std::exchange(word_, ""));
    isInWord_ = false;
  }
  void endCommand() {
    endWord();
    if (!words_.empty()) commands_.push_back(std::exchange(words_, {}));
  }

  std::vector<Words> commands_;
  Words words_;
  std::string word_;
  bool isInWord_ = false;
  char quote_ = '\0';
};

bool isPlaceholder(const std::string& word) { return word.starts_with('$'); }

// "$MAIN" or "${MAIN}" as the script has set it; every other word as it is.
std::string meant(const std::string& word, const std::map<std::string, std::string>& variables) {
  if (!isPlaceholder(word)) return word;
  std::string name = word.substr(1);
  if (name.starts_with('{') && name.ends_with('}')) name = name.substr(1, name.size() - 2);
  const auto known = variables.find(name);
  return known == variables.end() ? word : known->second;
}

void noteVariable(const std::string& word, std::map<std::string, std::string>& variables) {
  const std::size_t equals = word.find('=');
  if (equals != std::string::npos && equals != 0 && !word.starts_with('-')) {
    variables[word.substr(0, equals)] = word.substr(equals + 1);
  }
}

Words optionsIn(Words::const_iterator at, Words::const_iterator end) {
  Words options;
  for (; at != end; ++at) {
    if (isAmong(kPathOptions, *at)) {
      if (++at == end) break;
    } else if (isAmong(kSpacedOptions, *at) && at + 1 != end) {
      options.push_back(*at + '=' + *(at + 1));
      ++at;
    } else if (at->starts_with('-') && *at != "-jar" && *at != "--") {
      options.push_back(*at);
    }
  }
  return options;
}

bool isRedirection(const std::string& word) { return word.find_first_of("<>") != word.npos; }

Words argumentsIn(Words::const_iterator at, Words::const_iterator end) {
  Words arguments;
  for (; at != end && !isRedirection(*at); ++at) {
    if (*at != "$@" && *at != "$*" && *at != "${@}" && *at != "${1+$@}") arguments.push_back(*at);
  }
  return arguments;
}

}  // namespace

std::optional<StartCommand> readStartCommand(
    const std::string& text, const std::function<bool(const std::string&)>& isKnown) {
  std::map<std::string, std::string> variables;
  std::optional<StartCommand> found;
  for (const Words& command : ScriptReader().read(text)) {
    for (auto at = command.begin(); at != command.end(); ++at) {
      const std::string word = meant(*at, variables);
      const bool isJar = word.ends_with(".jar");
      if ((!isJar || (at != command.begin() && *(at - 1) == "-jar")) && isKnown(word)) {
        found =
            StartCommand{word, optionsIn(command.begin(), at), argumentsIn(at + 1, command.end())};
        break;
      }
      noteVariable(*at, variables);
    }
  }
  return found;
}

}  // namespace quillory::pack
