// Loading a JRE's bundle for its side effects, by the platform's bundle service.
#pragma once

namespace quillory {

/// Loads the bundle at `path`; whatever happens is only logged.
void loadOSXBundle(const char* path);

}  // namespace quillory
