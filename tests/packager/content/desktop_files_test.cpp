#include "packager/content/desktop_files.h"

#include <gtest/gtest.h>

#include "packager/content/icns.h"
#include "tests/harness/temp_dir.h"

namespace quillory::pack {
namespace {

using namespace std::string_literals;
using testing::TempDir;
using testing::writeFile;

std::string pngOf(char pixels) {
  return "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0"s + pixels + "\0\0\0"s + pixels + "the rest";
}

std::string chunkOf(const std::string& type, const std::string& content) {
  return type + "\0\0\0"s + static_cast<char>(content.size() + 8) + content;
}

TEST(DesktopFiles, DesktopIconFromTakesTheLargestPicture) {
  const TempDir dir;
  writeFile(dir / "a.png", pngOf(64));
  EXPECT_EQ(desktopIconFrom(dir / "a.png")->pixels, 64u);
  EXPECT_EQ(desktopIconFrom(dir / "a.png")->png, pngOf(64));
  writeFile(dir / "b.icns", icnsFrom(dir / "a.png"));
  EXPECT_EQ(desktopIconFrom(dir / "b.icns")->png, pngOf(64));
  const std::string several = chunkOf("ic11", pngOf(32)) + chunkOf("icp6", pngOf(64)) +
                              chunkOf("icp4", pngOf(16)) + chunkOf("TOC ", "no picture");
  writeFile(dir / "c.icns", chunkOf("icns", several));
  EXPECT_EQ(desktopIconFrom(dir / "c.icns")->pixels, 64u);
}

TEST(DesktopFiles, DesktopIconFromFindsNoneInOldOrDamagedOnes) {
  const TempDir dir;
  for (const std::string& icns :
       {chunkOf("icns", chunkOf("il32", "raw pixels")), "icns"s, "icns\0\0\0\x10ic07\0\0\0\0"s,
        "icns\0\0\0\x10ic07\xff\xff\xff\xff"s}) {
    writeFile(dir / "a.icns", icns);
    EXPECT_FALSE(desktopIconFrom(dir / "a.icns"));
  }
}

TEST(DesktopFiles, DesktopEntryTellsWhatADesktopAsks) {
  Config config;
  ApplicationConfig& app = config.application;
  app.name = "A \\ B";
  app.identifier = "com.example.a";
  EXPECT_EQ(desktopEntry(config, false),
            "[Desktop Entry]\nType=Application\nVersion=1.5\nName=A \\\\ B\n"
            "Exec=@EXECUTABLE@ %U\nTerminal=false\n");
  app.category = "public.app-category.developer-tools";
  app.urlSchemes = {"one", "two"};
  EXPECT_EQ(desktopEntry(config, true),
            "[Desktop Entry]\nType=Application\nVersion=1.5\nName=A \\\\ B\n"
            "Exec=@EXECUTABLE@ %U\nIcon=com.example.a\nCategories=Development;\n"
            "MimeType=x-scheme-handler/one;x-scheme-handler/two;\nTerminal=false\n");
  config.documents = {{"Letter", {"letter"}}};
  EXPECT_NE(desktopEntry(config, true)
                .find("\nMimeType=application/x-com.example.a.letter;x-scheme-handler/one;"),
            std::string::npos);
}

// What it does is tested with a whole bundle.
TEST(DesktopFiles, InstallScriptHasNamesAsWordsOfAShell) {
  ApplicationConfig app;
  app.name = "It's";
  app.identifier = "com.example.a";
  app.executable = "$(reboot)";
  const std::string script = installScript(app, 128);
  EXPECT_TRUE(script.starts_with("#!/bin/sh\n"));
  EXPECT_NE(script.find("\nname='It'\\''s'\nid='com.example.a'\nexecutable='$(reboot)'\n"
                        "pixels=128\n"),
            std::string::npos);
}

}  // namespace
}  // namespace quillory::pack
