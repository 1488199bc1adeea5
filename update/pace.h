// When the next check is due. After a good answer so many hours pass, a fifth more or less; after a
// failure 1, 2, 4 minutes and so on, up to 6 hours.
#pragma once
#include <cstdint>

#include "update/state.h"

namespace quillory::update {

/// Seconds since 1970.
std::int64_t now();

/// Whether a check is due; also when it was put off further than any check ever is: a clock has
/// been set back.
bool isDue(const State& state, std::int64_t checkHours);

void noteAnswer(State& state, std::int64_t checkHours);
void noteFailure(State& state);

}  // namespace quillory::update
