// The shape of an installed JRE: a bundle (its folder name and ".plugin") whose home is a link to a
// plain folder beside it, the alias. docs/operating.md shows the layout.
//
//   Quillory-JRE-8-complete/                     the alias: bin, lib, ...
//   Quillory-JRE-8-complete.plugin/Contents/
//     MacOS/libjli.dylib                         the bundle's executable, a link
//     Home                                       a link to the alias; or, of a JDK, a folder whose
//                                                "jre" is that link
#pragma once
#include <string>

namespace quillory {

inline constexpr char kBundleSuffix[] = ".plugin";

/// Turns the freshly provisioned bundle at `bundle` into that shape, and returns the alias
/// folder's path. A folder that is itself a Java home becomes a bundle first. Doing it again
/// changes nothing.
///
/// Every step is logged as the shell command that it stands for; none is checked, and a step that
/// fails leaves the others to be done. Without one single entry in Contents/MacOS there is no
/// executable, and nothing is removed or linked there. A path without the suffix is left alone,
/// and is the result.
std::string prepareJreBundle(const std::string& bundle);

/// Takes apart a bundle and alias of an earlier installation, following no link: afterwards the
/// alias is gone and the bundle, if there was one, is an empty folder that can be renamed onto.
/// Does nothing for a path without the suffix.
void dismantleJreBundle(const std::string& bundle);

}  // namespace quillory
