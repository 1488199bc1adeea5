// Functions for programs outside of this tree, which know them by these names and signatures.
// Nothing in the launcher calls them.
#pragma once

namespace quillory::splash {

/// Takes the bar away. An animation that runs goes on unseen, which setProgress(-100) avoids.
void hideProgress();

/// The margin around the picture, as setSplashBuffer() stored it.
int getSplashBuffer();

}  // namespace quillory::splash
