// The plain archive of a component, by one of two roads: restored by a delta from what is
// installed, or loaded whole.
#pragma once
#include <string>

#include "update/loading.h"
#include "update/progress.h"

namespace quillory::update {

/// What has been loaded before, for the progress of all.
struct LoadProgress {
  Progress& progress;
  std::int64_t doneBefore = 0;
  std::int64_t total = 0;
};

/// Puts the archive, with the length and the SHA-256 that the list names, at `path`. A delta that
/// cannot be used here costs its bytes: the log says why, and the whole archive comes.
FetchResult provideArchive(const LoadRequest& request, const PlannedComponent& planned,
                           const std::string& path, LoadProgress& progress);

}  // namespace quillory::update
