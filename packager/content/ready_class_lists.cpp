#include "packager/content/ready_class_lists.h"

#include <string_view>

#include "packager/content/bundle_tools.h"
#include "packager/content/jar_reader.h"
#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

// As they stand among a class's constants. A Swing application may have a picture of JavaFX in it,
// but does not begin as one.
constexpr std::string_view kSwingName = "javax/swing/J";
constexpr std::string_view kJavaFXName = "javafx/application/Application";

Toolkit toolkitIn(const std::string& path) {
  Toolkit found = Toolkit::kNone;
  Jar(path).eachClass([&](std::string_view bytes) {
    if (bytes.find(kJavaFXName) != std::string_view::npos) {
      found = Toolkit::kJavaFX;
    } else if (found == Toolkit::kNone && bytes.find(kSwingName) != std::string_view::npos) {
      found = Toolkit::kSwing;
    }
    return found != Toolkit::kJavaFX;
  });
  return found;
}

}  // namespace

Toolkit toolkitOf(const std::vector<std::string>& jars) {
  Toolkit found = Toolkit::kNone;
  for (const std::string& jar : jars) {
    Toolkit own = Toolkit::kNone;
    try {
      own = toolkitIn(jar);
    } catch (const PackError&) {  // Who packs it has a finding of its own.
    }
    if (own == Toolkit::kJavaFX) {
      return own;
    }
    found = own == Toolkit::kNone ? found : own;
  }
  return found;
}

std::string readyClassList(Toolkit toolkit) {
  switch (toolkit) {
    case Toolkit::kSwing:
      return ownFile("class-lists/swing.classlist");
    case Toolkit::kJavaFX:
      return ownFile("class-lists/javafx.classlist");
    case Toolkit::kNone:
      break;
  }
  return "";
}

}  // namespace quillory::pack
