// Whether the way to the web costs by the byte. Only what is critical is loaded then, unless
// somebody asks for it.
#pragma once

namespace quillory::update {

struct MeteredCalls {
  bool (*isMetered)();
};
/// Assigned to by tests only. Linux: what NetworkManager says, where it runs; macOS tells nobody
/// but programs of its own frameworks, so that no line there counts as metered.
extern MeteredCalls meteredCalls;

}  // namespace quillory::update
