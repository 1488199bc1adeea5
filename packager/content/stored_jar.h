// Jars without compression inside. The archive that they are packed into compresses better what is
// not compressed already, and a delta finds in the older jar what is still in the newer one.
#pragma once
#include <string>

namespace quillory::pack {

/// Writes the jar at `source` to `path`, every entry stored: the same entries in the same order
/// with the same content, so that the signatures of a signed jar hold. Their times are all the
/// earliest that a jar can hold, and what they had in extra fields is gone. A jar in the jar is
/// content like any other.
///
/// Returns "" when it is written; or why it stays as it is, in words, with nothing written: it is
/// no plain jar, but one with something in front of it, say, or one beyond 4 GiB. Throws PackError
/// when an entry is damaged, when the jar cannot be read, and where the file cannot be written.
std::string storeJar(const std::string& source, const std::string& path);

/// The same without what makes a module of a jar (module-info.class, also of single versions of
/// Java), which counts for nothing on a class path.
std::string storeJarForClassPath(const std::string& source, const std::string& path);

}  // namespace quillory::pack
