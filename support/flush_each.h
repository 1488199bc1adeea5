// Flushing a tree to the disk file by file, for systems without a call for all of it. By itself,
// because lzma64, which travels in every bundle and flushes single files, would have to bring the
// library's whole walk over folders, which is half a megabyte.
#pragma once
#include <string>

namespace quillory {

/// Flushes every file and folder below `folder`, one after another, by `flush`, and `folder` last.
/// 0, or the error number of the first that failed; the others are flushed all the same.
/// `descriptor` is the one of `folder`.
int flushEachBelow(int descriptor, const std::string& folder, int (*flush)(int descriptor));

}  // namespace quillory
