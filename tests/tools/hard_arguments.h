// What must arrive as it is, through every way to rights.
#pragma once
#include <string>
#include <vector>

namespace quillory::testing {

inline const std::vector<std::string>& hardArguments() {
  static const std::vector<std::string> arguments = {"plain",
                                                     "two words",
                                                     "",
                                                     "it's",
                                                     "''",
                                                     "\"double\"",
                                                     "$HOME ${HOME}",
                                                     "$(touch /x)",
                                                     "`touch /x`",
                                                     "back\\slash\\",
                                                     "\\n \\\" \\\\",
                                                     "line\nbreak\n",
                                                     "\n",
                                                     "\r\n\ttab",
                                                     "grüß 漢字 𝄞",
                                                     "-n",
                                                     "--",
                                                     "--prompt=other",
                                                     "A=b",
                                                     "* ? [a] ~ {}",
                                                     "; & | > < ( ) # !",
                                                     "%s %h %%",
                                                     "\x01\x7f\xff",
                                                     std::string(20000, 'x')};
  return arguments;
}

}  // namespace quillory::testing
