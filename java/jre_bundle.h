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

/// A bundle that has its shape, except that what belongs into the alias may not be there yet.
struct ShapedJre {
  std::string alias;
  /// Where the content of the alias is: in the bundle, until publishJre(); or `alias` itself.
  std::string content;
};

/// The same up to the last step: the log says all of it, and the alias is there, as it was or else
/// empty. What a start looks for is behind the alias, so nobody takes the JRE for a whole one until
/// it is published, however long it takes to complete it.
ShapedJre shapeJreBundle(const std::string& bundle);

/// The same for a bundle that is being made elsewhere, and whose alias will be at `alias`: its
/// links lead there, its content stays in it, and nothing is made at that place. Whoever moves both
/// lets the content go first: an alias alone is a JRE, and a bundle alone is none.
ShapedJre shapeJreBeside(const std::string& bundle, const std::string& alias);

/// Lets the content take the place of the alias, in one step where the file system can do that;
/// what was there is deleted.
void publishJre(const ShapedJre& jre);

/// Whether the JRE folder found in a master folder can be started from: it is healthy, as
/// isHealthyJre() says, and not half made.
bool isWholeJre(const std::string& jreFolder);

/// Whether the JRE folder found in a master folder, an alias or, without one, a bundle, was left
/// by a start that did not publish it: its home is not yet behind the alias. A bundle alone always
/// was; an alias alone is a JRE that somebody else has put there.
bool isHalfMade(const std::string& jreFolder);

}  // namespace quillory
