// The update URL: where an application's versions and archives lie. It stands in the tail, or the
// tail leaves it to the parameters.
#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace quillory {

/// The update URL that packagers write to switch updating off.
inline constexpr char kInvalidUpdateURL[] = "http://no.invalid/";

/// The update URL of a tail that leaves it to the parameters.
inline constexpr char kDynamicUpdateUrl[] = "D";

/// Whether `url` begins with the 18 characters of kInvalidUpdateURL; false for null.
bool isInvalidUpdateURL(const char* url);

/// A name as part of an address: what no address can hold, a blank or a letter beyond ASCII say, is
/// written byte by byte as "%" and two digits. All else stays, also what separates the parts of an
/// address and what is escaped already: names with these have always been asked for so.
std::string escapedForUrl(std::string_view name);

/// The URL of one start, in the forms that its readers want. It never changes.
class UpdateUrl {
 public:
  UpdateUrl() = default;
  /// `inTail`: the tail's record. `inParams`: the parameter "update_url", where there is one.
  UpdateUrl(const std::string& inTail, const std::optional<std::string>& inParams);

  /// Whether the tail leaves it to the parameters.
  bool isDynamic() const { return isDynamic_; }

  /// The one that counts, as it came; "" where nobody gives one.
  const std::string& asItCame() const { return asItCame_; }

  /// The same with a '/' at its end, which names are put behind; "" stays "".
  const std::string& inForce() const { return inForce_; }

  /// The two texts as Java is told them when it is started: the one that counts as inForce(), the
  /// other one as it came. The properties that are made of the tail and of the parameters have both
  /// as they came.
  const std::string& toldOfTail() const { return toldOfTail_; }
  const std::optional<std::string>& toldOfParams() const { return toldOfParams_; }

 private:
  bool isDynamic_ = false;
  std::string asItCame_;
  std::string inForce_;
  std::string toldOfTail_;
  std::optional<std::string> toldOfParams_;
};

}  // namespace quillory
