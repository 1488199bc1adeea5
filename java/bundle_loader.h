// Loading a bundle for its side effects, by the platform's bundle service.
#pragma once

namespace quillory {

struct BundleCalls {
  enum class Outcome { kNoBundle, kLoaded, kNotLoaded };
  /// Makes a URL of `path` (logging it), creates the bundle and loads its executable.
  Outcome (*loadBundle)(const char* path);
};
extern BundleCalls bundleCalls;

/// Loads the bundle at `path`; whatever happens is only logged.
void loadOSXBundle(const char* path);

}  // namespace quillory
