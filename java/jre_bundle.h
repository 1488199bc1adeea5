// The shape of an installed JRE: a bundle (its folder name and ".plugin") whose home is a link to a
// plain folder beside it, the alias. docs/operating.md shows the layout.
#pragma once

namespace quillory {

/// Turns the freshly provisioned bundle at `bundlePath` into that shape, and returns the alias
/// folder's path in a new block (free() it).
char* initOSXJRE(const char* bundlePath);

/// Takes apart a bundle and alias of an earlier installation, following no link: afterwards the
/// alias is gone and the bundle, if there was one, is an empty folder that can be renamed onto.
void dismantleOSXJRE(const char* bundlePath);

}  // namespace quillory
