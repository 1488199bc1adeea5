// What a desktop of Linux wants of an application, for one user: an entry in its menus, an icon,
// the kinds of files that it opens, and a script that puts these, and the application, where the
// desktop looks for them (the XDG folders).
#pragma once
#include <optional>
#include <string>

#include "packager/config/config.h"

namespace quillory::pack {

struct DesktopIcon {
  std::string png;
  unsigned pixels = 0;  ///< its width and height
};

/// The largest PNG picture in an icon file; none where it holds none. Throws PackError when the
/// file cannot be read.
std::optional<DesktopIcon> desktopIconFrom(const std::string& path);

/// The menu entry (Desktop Entry 1.5), which claims the configuration's documents and URL schemes.
/// The command is written as @EXECUTABLE@, for the script.
std::string desktopEntry(const Config& config, bool hasIcon);

/// "install.sh" for a POSIX shell, which lies beside the bundle, the entry (<identifier>.desktop),
/// the icon (<identifier>.png; 0 pixels: there is none) and, where there are any, the documents'
/// media types (<identifier>.xml): installs the application for the user who runs it, an earlier
/// version replaced, and with --uninstall takes it away.
std::string installScript(const ApplicationConfig& application, unsigned iconPixels);

}  // namespace quillory::pack
