// Lists of Java's classes for applications that nobody has trained: one for each of the toolkits
// that windows are made with.
#pragma once
#include <string>
#include <vector>

namespace quillory::pack {

enum class Toolkit { kNone, kSwing, kJavaFX };

/// What the classes in `jars` name: JavaFX where one begins such an application, else Swing where
/// one uses its windows or what is in them. Jars that cannot be read have none.
Toolkit toolkitOf(const std::vector<std::string>& jars);

/// The list that comes with us for a toolkit; "" for kNone, and when it is nowhere.
std::string readyClassList(Toolkit toolkit);

}  // namespace quillory::pack
