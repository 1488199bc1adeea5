// Where the stream of an archive is cut into pieces that are compressed side by side, and found
// again where they have not changed. The same content is cut alike on every machine.
#pragma once
#include <cstdint>
#include <vector>

#include "packager/bytes/piecewise_lzma_sink.h"
#include "packager/content/content_tree.h"

namespace quillory::pack {

/// The cuts of the archive of a tree, whose first entry stands behind `before` bytes.
///
/// With large files in it that are no jars, as runtimes have: around those, which have least in
/// common with what is beside them, and evenly inside those that are too large for one piece; there
/// the second part may copy from the end of the first. A large program is searched less far.
///
/// Without, where the bytes themselves say it: what is changed, put in or taken out changes the
/// cuts beside it and no others. The last few bytes, before which a signature changes nothing, are
/// a piece of their own. Small content is one piece.
///
/// A piece takes some eleven times its length of memory. Throws PackError when a file cannot be
/// read.
std::vector<LzmaCut> cutsFor(const ContentTree& content, std::uint64_t before = 0);

/// How much of an archive an entry is, with the records around it; 0 for what is left out.
std::uint64_t archivedBytes(const std::string& path, const ContentEntry& entry);

/// Whether it is a program or a library of one, by its beginning. A class begins as universal
/// programs do, but is small and lies in a jar.
bool isProgram(const ContentEntry& entry);

}  // namespace quillory::pack
