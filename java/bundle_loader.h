// Loading a JRE's bundle for its side effects, by the platform's bundle service.
#pragma once

namespace quillory {

/// The bundle service. Without a Cocoa there is none, and no bundle is ever created.
struct BundleCalls {
  /// Makes a URL of the folder `path`, logging it, and a bundle of that; null when there is none.
  /// A bundle is never released: that would unload its code.
  void* (*createBundle)(const char* path);
  /// Loads the bundle's executable; true for success without an error object.
  bool (*loadExecutable)(void* bundle);
};
extern BundleCalls bundleCalls;

/// Loads the bundle at `path`; whatever happens is only logged.
void loadOSXBundle(const char* path);

/// Makes Cocoa answer for bundleCalls and for isMainThread() of threadCalls (java/jni_launch.h).
/// Only in programs that link the platform layer; called once, before the run thread starts.
void installCocoaBundleLoader();

}  // namespace quillory
