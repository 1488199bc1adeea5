// The command with which a shell script starts Java. Nothing of the script is run: what it says by
// itself is understood, and what depends on the machine that it runs on is not.
#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillory::pack {

/// `started` is a main class, or the path of a jar behind "-jar".
struct StartCommand {
  std::string started;
  std::vector<std::string> options;    ///< of Java, those about class paths left out
  std::vector<std::string> arguments;  ///< those of the user left out
};

/// The last command in the text of a script that starts what `isKnown` knows, asked with names of
/// classes and with paths of jars; none where there is no such command. Options and arguments keep
/// what stands for other text ("$APP_HOME").
std::optional<StartCommand> readStartCommand(
    const std::string& text, const std::function<bool(const std::string&)>& isKnown);

}  // namespace quillory::pack
