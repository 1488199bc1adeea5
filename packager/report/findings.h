// What the packager has to say about somebody's files: what is wrong, where, and what to do.
#pragma once
#include <stdexcept>
#include <string>
#include <vector>

namespace quillory::pack {

/// A place in a text file, or a file alone (line 0), or nowhere (an empty name).
struct Place {
  std::string file;
  unsigned line = 0;
};

enum class Severity { kNote, kWarning, kError };

struct Finding {
  Severity severity = Severity::kError;
  std::string rule;  ///< short name of the lint, as docs/packaging.md lists it
  std::string what;  ///< one sentence, with its reason
  Place place;
  std::string advice;  ///< what to do about it; may be empty
};
using Findings = std::vector<Finding>;

/// What a finding is about: how its sentence calls it ("application.name", the path of a program),
/// and where it stands.
struct Subject {
  std::string name;
  Place place;
};

/// Whether one of them is an error: warnings and notes keep nobody from packing.
bool hasErrors(const Findings& findings);
/// Adds `more` behind the others.
void append(Findings& findings, const Findings& more);

/// "quillory.toml:3: error: what [rule]" and, on a second line, the advice.
std::string asText(const Finding& finding);
/// "note", "warning" or "error".
const char* asText(Severity severity);
/// "file:line", "file" or "".
std::string asText(const Place& place);

/// An operation that could not be done. The command ends with status 1.
class PackError : public std::runtime_error {
 public:
  explicit PackError(const std::string& what, std::string advice = "", Place place = {});
  /// The same as an error without a rule.
  Finding finding() const;

 private:
  std::string advice_;
  Place place_;
};

/// A configuration, or the content that it names, that cannot be packed: status 3.
class RejectedInput : public std::runtime_error {
 public:
  explicit RejectedInput(Findings findings);
  const Findings& findings() const { return findings_; }

 private:
  Findings findings_;
};

/// The findings again. Throws RejectedInput with all of them when one is an error.
Findings accepted(Findings findings);

/// Throws PackError about `file`: `what`, as in "cannot be opened", and the text of `number`, which
/// is an errno: "FILE: error: cannot be opened: No such file or directory".
[[noreturn]] void throwFileError(const std::string& file, const char* what, int number,
                                 const std::string& advice = "");

}  // namespace quillory::pack
