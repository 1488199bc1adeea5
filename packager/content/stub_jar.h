// The small jar that stands in as lib/rt.jar in runtimes of Java 9 and later.
#pragma once
#include <string>

namespace quillory::pack {

/// A valid jar with nothing but a manifest, always the same bytes. The launcher takes a runtime
/// without lib/rt.jar for a broken one; since Java 9 no runtime has that file.
std::string stubRuntimeJar();

}  // namespace quillory::pack
