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
/// The same for who knows where it is cut.
LzmaTuning tuningFor(const ContentTree& content, int level, const std::vector<LzmaCut>& cuts);

/// What an installation may take for unpacking. Packing takes some eleven times as much.
inline constexpr std::size_t kLargestArchiveDictionary = std::size_t{64} << 20;

}  // namespace quillory::pack
