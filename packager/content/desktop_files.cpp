#include "packager/content/desktop_files.h"

#include <array>
#include <string_view>
#include <utility>

#include "packager/bytes/byte_sinks.h"

namespace quillory::pack {
namespace {

constexpr std::string_view kPngStart("\x89PNG\r\n\x1a\n", 8);
constexpr std::size_t kPngWidth = 16;
constexpr std::size_t kChunkHeader = 8;

// Categories of macOS and those of desktops.
constexpr std::array<std::pair<const char*, const char*>, 12> kCategories = {
    {{"public.app-category.business", "Office;"},
     {"public.app-category.developer-tools", "Development;"},
     {"public.app-category.education", "Education;"},
     {"public.app-category.finance", "Office;Finance;"},
     {"public.app-category.games", "Game;"},
     {"public.app-category.graphics-design", "Graphics;"},
     {"public.app-category.music", "AudioVideo;Audio;"},
     {"public.app-category.news", "Network;News;"},
     {"public.app-category.photography", "Graphics;Photography;"},
     {"public.app-category.productivity", "Office;"},
     {"public.app-category.utilities", "Utility;"},
     {"public.app-category.video", "AudioVideo;Video;"}}};

unsigned number32(std::string_view bytes, std::size_t at) {
  unsigned value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  }
  return value;
}

std::optional<DesktopIcon> pngIn(std::string_view bytes) {
  if (!bytes.starts_with(kPngStart) || bytes.size() < kPngWidth + 4) {
    return std::nullopt;
  }
  return DesktopIcon{std::string(bytes), number32(bytes, kPngWidth)};
}

// A value of a desktop entry: a line, with a backslash as its mark.
std::string entryText(const std::string& text) {
  std::string out;
  for (const char c : text) {
    out += c == '\\' ? std::string("\\\\") : std::string(1, c);
  }
  return out;
}

// A word of a shell.
std::string shellWord(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  }
  return out + '\'';
}

constexpr char kInstallScript[] = R"sh(
here=$(cd "$(dirname "$0")" && pwd)
data=${XDG_DATA_HOME:-$HOME/.local/share}
home=$data/$id
bundle=$home/$name.app
entry=$data/applications/$id.desktop
icon=$data/icons/hicolor/${pixels}x$pixels/apps/$id.png
types=$data/mime/packages/$id.xml

tell_desktop() {
  # Desktops that have none of these look for themselves.
  update-desktop-database -q "$data/applications" 2>/dev/null || :
  if [ -d "$data/mime" ]; then
    update-mime-database "$data/mime" 2>/dev/null || :
  fi
  gtk-update-icon-cache -q -t "$data/icons/hicolor" 2>/dev/null || :
}

case ${1-} in
"") ;;
--uninstall)
  rm -rf "$home"
  rm -f "$entry" "$icon" "$types"
  tell_desktop
  echo "Removed $name. What it has installed at its first start lies in"
  echo "$HOME/Library/Application Support/Quillory-$name"
  exit
  ;;
*)
  echo "usage: install.sh [--uninstall]" >&2
  exit 2
  ;;
esac

mkdir -p "$home" "$data/applications"
# What was stopped between the two moves below.
if [ -d "$bundle.old" ] && [ ! -e "$bundle" ]; then
  mv "$bundle.old" "$bundle"
fi
# The new one is whole before it takes the place of an earlier one, which is there until then.
rm -rf "$bundle.new" "$bundle.old"
cp -R "$here/$name.app" "$bundle.new"
if [ -e "$bundle" ]; then
  # Both or none, whoever presses Ctrl-C or logs out.
  trap '' HUP INT TERM
  mv "$bundle" "$bundle.old"
fi
if ! mv "$bundle.new" "$bundle"; then
  mv "$bundle.old" "$bundle"
  exit 1
fi
trap - HUP INT TERM
rm -rf "$bundle.old"
if [ "$pixels" != 0 ]; then
  mkdir -p "$(dirname "$icon")"
  cp "$here/$id.png" "$icon"
fi
if [ -e "$here/$id.xml" ]; then
  mkdir -p "$(dirname "$types")"
  cp "$here/$id.xml" "$types"
fi
# In an entry's command a path is quoted twice: as a word, and as a value.
program=$(printf '%s' "$bundle/Contents/MacOS/$executable" |
  sed -e 's/[\\"`$]/\\&/g' -e 's/\\/\\\\/g' -e 's/%/%%/g' -e 's/[\\|&]/\\&/g')
sed "s|@EXECUTABLE@|\"$program\"|" "$here/$id.desktop" >"$entry.new"
mv "$entry.new" "$entry"
tell_desktop
echo "Installed $name for $(id -un): it is in the menus, and at"
echo "$bundle/Contents/MacOS/$executable"
)sh";

}  // namespace

std::optional<DesktopIcon> desktopIconFrom(const std::string& path) {
  const std::string bytes = readWholeFile(path);
  if (!bytes.starts_with("icns")) {
    return pngIn(bytes);
  }
  std::optional<DesktopIcon> largest;
  for (std::size_t at = kChunkHeader; at + kChunkHeader <= bytes.size();) {
    const std::size_t size = number32(bytes, at + 4);
    if (size < kChunkHeader || size > bytes.size() - at) {
      break;
    }
    const auto found =
        pngIn(std::string_view(bytes).substr(at + kChunkHeader, size - kChunkHeader));
    if (found && (!largest || found->pixels > largest->pixels)) {
      largest = found;
    }
    at += size;
  }
  return largest;
}

std::string desktopEntry(const Config& config, bool hasIcon) {
  const ApplicationConfig& application = config.application;
  std::string entry =
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Version=1.5\n"
      "Name=" +
      entryText(application.name) +
      "\n"
      "Exec=@EXECUTABLE@ %U\n";
  if (hasIcon) {
    entry += "Icon=" + entryText(application.identifier) + '\n';
  }
  for (const auto& [ofMacs, ofDesktops] : kCategories) {
    if (application.category == ofMacs) {
      entry += std::string("Categories=") + ofDesktops + '\n';
    }
  }
  const std::string types =
      desktopMediaTypes(application.identifier, config.documents, application.urlSchemes);
  if (!types.empty()) {
    entry += "MimeType=" + types + '\n';
  }
  return entry + "Terminal=false\n";
}

std::string installScript(const ApplicationConfig& application, unsigned iconPixels) {
  return "#!/bin/sh\n"
         "# Usage: install.sh [--uninstall]\n"
         "# Installs the application that lies beside this file for you alone, or takes it away.\n"
         "# shellcheck disable=SC2016  # names are what they are\n"
         "set -eu\n"
         "name=" +
         shellWord(application.name) + "\nid=" + shellWord(application.identifier) +
         "\nexecutable=" + shellWord(application.executable) +
         "\npixels=" + std::to_string(iconPixels) + '\n' + kInstallScript;
}

}  // namespace quillory::pack
