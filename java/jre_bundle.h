// The shape of an installed JRE: a bundle (its folder name and ".plugin") whose home is a link to a
// plain folder beside it, the alias. docs/operating.md shows the layout.
//
//   Quillory-JRE-8-complete/                     the alias: bin, lib, ...
//   Quillory-JRE-8-complete.plugin/Contents/
//     MacOS/libjli.dylib                         the bundle's executable, a link
//     Home                                       a link to the alias; or, of a JDK, a folder whose
//                                                "jre" is that link
#pragma once

namespace quillory {

inline constexpr char kBundleSuffix[] = ".plugin";

/// Turns the freshly provisioned bundle at `bundlePath` into that shape, and returns the alias
/// folder's path in a new block (free() it). A folder that is itself a Java home becomes a bundle
/// first. Doing it again changes nothing.
///
/// Every step is logged as the shell command that it stands for; none is checked, and a step that
/// fails leaves the others to be done. Without one single entry in Contents/MacOS there is no
/// executable, and nothing is removed or linked there. A path without the suffix is left alone,
/// and is the result.
char* initOSXJRE(const char* bundlePath);

/// Takes apart a bundle and alias of an earlier installation, following no link: afterwards the
/// alias is gone and the bundle, if there was one, is an empty folder that can be renamed onto.
/// Does nothing for a path without the suffix.
void dismantleOSXJRE(const char* bundlePath);

}  // namespace quillory
