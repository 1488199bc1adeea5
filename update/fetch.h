// A file of the release folder, from the first of several servers that has it. What has come stays
// in the folder of downloads, under the file's SHA-256, until all of it is there: a transfer that
// was broken off, or a run that was killed, goes on where it was.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "formats/release_list.h"
#include "update/transport.h"

namespace quillory::update {

enum class FetchEnd {
  kComplete,
  kCancelled,
  kFailed,     ///< a later run may have better luck
  kNotWritten  ///< the disk is full, say: what has come stays
};

struct FetchResult {
  FetchEnd end = FetchEnd::kFailed;
  std::string reason{};  ///< in words
};

/// Told how many bytes of the file are there.
using FetchProgress = std::function<void(std::int64_t bytes)>;

/// How often a transfer that brings nothing new is tried again on one server.
inline constexpr int kMostVainTries = 3;
inline constexpr std::uint64_t kRetryMicros = 1'000'000;

/// Fetches `file` from one of `servers` (addresses that end with '/') into `downloads`, which is
/// there, and gives it the path partPath(). Complete: it has the length and the SHA-256 that are
/// named. Of what has others nothing is kept, and the next server is asked.
FetchResult fetchFile(
    Transport& transport, const std::vector<std::string>& servers, const ReleaseFile& file,
    const std::string& downloads, const FetchProgress& progress = [](std::int64_t) {});

/// <downloads>/<SHA-256>.part
std::string partPath(const std::string& downloads, const ReleaseFile& file);

/// Removes from `downloads` whatever belongs to none of `files`.
void clearDownloads(const std::string& downloads, const std::vector<ReleaseFile>& files);

/// A small file, into memory.
struct TextFetch {
  TransferResult result;
  std::string bytes;
  std::string eTag;
};
TextFetch fetchText(Transport& transport, const std::string& url, std::size_t mostBytes,
                    const std::string& ifNoneMatch);

}  // namespace quillory::update
