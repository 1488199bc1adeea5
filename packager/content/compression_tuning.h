// How the stream of an archive is tuned to what is in it.
#pragma once
#include <vector>

#include "lzma/lzma_alone.h"
#include "packager/bytes/piecewise_lzma_sink.h"
#include "packager/content/content_tree.h"

namespace quillory::pack {

/// The tuning for a tree at a level. Classes, texts and jars have no boundaries that their bytes
/// are aligned to, while programs have. Above the fast levels the dictionary is as large as the
/// content, or the longest of its pieces, in powers of two that every decoder takes, up to
/// kLargestArchiveDictionary; a small archive has a small one, at every level.
LzmaTuning tuningFor(const ContentTree& content, int level);

/// Where the archive of a tree is cut into pieces that are compressed side by side: around large
/// files, which have least in common with what is beside them, and evenly inside those that are too
/// large for one: there the second part may copy from the end of the first. A large program is
/// searched less far. A piece takes some
/// eleven times its length of memory.
std::vector<LzmaCut> cutsFor(const ContentTree& content);

/// What an installation may take for unpacking. Packing takes some eleven times as much.
inline constexpr std::size_t kLargestArchiveDictionary = std::size_t{64} << 20;

}  // namespace quillory::pack
