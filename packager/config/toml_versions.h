// What differs between the versions 3 and 4 of the TOML library: distributions have either.
// Templates, so that what the version at hand lacks is not looked at.
#pragma once
#include <string>
#include <toml.hpp>

namespace quillory::pack {

/// The line on which a place in the file begins.
template <typename Location>
unsigned lineAt(const Location& location) {
  if constexpr (requires { location.first_line_number(); }) {
    return static_cast<unsigned>(location.first_line_number());
  } else {
    return static_cast<unsigned>(location.line());
  }
}

/// A text value: a type of the library's own in version 3.
template <typename Text>
const std::string& plainText(const Text& text) {
  if constexpr (requires { text.str; }) {
    return text.str;
  } else {
    return text;
  }
}

/// The line of a mistake in the notation; 0 when the library does not say.
template <typename Error, typename SyntaxError = toml::syntax_error>
unsigned lineOfMistake(const Error& error) {
  if constexpr (requires { error.location(); }) {
    return lineAt(error.location());
  } else {
    const auto* mistake = dynamic_cast<const SyntaxError*>(&error);
    const bool isPlaced = mistake != nullptr && !mistake->errors().empty() &&
                          !mistake->errors().front().locations().empty();
    return isPlaced ? lineAt(mistake->errors().front().locations().front().first) : 0;
  }
}

}  // namespace quillory::pack
