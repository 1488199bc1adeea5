// Releases of a small application, made in a folder of a test as quillory-pack makes them, and
// signed with keys of the test.
#pragma once
#include <map>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "packager/keys/signing_key.h"
#include "tests/harness/temp_dir.h"

namespace quillory::testing {

/// Keys that differ, made once a process.
const pack::SigningKey& testKey(const std::string& name);

/// Paths and contents. A path that ends with '/' is a folder.
using Content = std::map<std::string, std::string>;

/// The time at which releases are issued.
inline constexpr std::int64_t kIssued = 1790000000;
inline constexpr std::int64_t kDay = 86400;

class ReleaseFolder {
 public:
  std::string path() const { return folder_.str(); }
  std::string operator/(const std::string& inside) const { return folder_ / inside; }

  /// Writes the archive of a component, and returns what a list says of it.
  ReleaseComponent add(const std::string& role, const std::string& name, const std::string& version,
                       const Content& content, const pack::SigningKey& key = testKey("working"));

  /// Makes the delta from `base` to `component`, which are both of add(), and has the component
  /// name it. A test failure where none is worth while.
  void addDelta(ReleaseComponent& component, const ReleaseComponent& base);

  /// A list with nothing special about it: of the application Demo, for every platform.
  static ReleaseList list(std::int64_t number, std::vector<ReleaseComponent> components);

  /// Signs and writes it under its name, and under its own number.
  void publish(const ReleaseList& list,
               const std::vector<const pack::SigningKey*>& keys = {&testKey("working")}) const;

 private:
  std::string plainPath(const ReleaseComponent& component) const;

  TempDir folder_;
  TempDir plain_;  ///< archives before they were packed
};

/// The bytes of a file, taken as a list names it.
ReleaseFile named(const std::string& name, const std::string& bytes);

}  // namespace quillory::testing
