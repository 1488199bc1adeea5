// The name of the JRE that an application runs on: its folders are called after it.
#pragma once
#include <optional>
#include <string>

namespace quillory {

/// A name that can be part of a folder's name. It comes from a parameter or from a file, and is
/// made, or refused, here alone: whoever has one need not ask again.
class JreName {
 public:
  /// "", the name of a start to which nobody gave one.
  JreName() = default;

  /// Nothing, with an error in the log, where `name` with the JRE's `version` (may be "") cannot be
  /// the name of a folder inside its parent, as isUsableAsJre() says: it would lead out of
  /// the master folder.
  static std::optional<JreName> make(const std::string& name, const std::string& version);

  const std::string& text() const { return text_; }

 private:
  explicit JreName(std::string text);
  std::string text_;
};

}  // namespace quillory
