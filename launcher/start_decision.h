// The decision of a start, by one start at a time: one that finds something to install takes the
// lock of the installation, clears up behind those that were killed, and decides anew.
#pragma once
#include "launcher/start.h"
#include "launcher/update_decision.h"

namespace quillory {

/// What is to be done. Where something is to be extracted, `start` holds the lock, or nobody may be
/// waited for; a start in which everything is current waits for nobody.
UpdateDecision decideInTurn(Start& start);

}  // namespace quillory
