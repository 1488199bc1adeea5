// An application that others have made, packed with what "quillory-pack init" writes, started by
// the launcher on a window server of its own, and looked at. Nothing is changed by hand: what does
// not work so is a defect of ours, or said in docs/applications.md.
#pragma once
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/e2e/launcher_run.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"
#include "tests/ui/x_server.h"

namespace quillory::testing {

/// A window with a title, where it is on the screen.
struct TitledWindow {
  std::string id;
  std::string title;
  WindowAt place;
};

class RealApplication : public ::testing::Test {
 protected:
  /// A copy of a folder of the system, links followed, without what is named in `leftOut`: the
  /// folder that a person would go to. Skips the test where it is not installed.
  void unpack(const std::string& installed, const std::vector<std::string>& leftOut = {});
  /// "init", "keygen" and "bundle" in that folder.
  void pack();
  /// Runs a program in that folder; its failure is the test's.
  void run(const std::vector<std::string>& command);
  /// Takes the bundle that such a program has left in "dist".
  void findBundle();
  /// Starts the launcher of the bundle, and ends a start before.
  void start(const std::vector<std::string>& arguments = {});
  /// As the session does at its end; the log of the start.
  std::string end();

  /// Waits for a window whose title has a match of the regular expression.
  TitledWindow window(const std::string& title) const;
  /// Waits until a window shows more than one colour or two, and keeps a picture of the screen in
  /// the build folder as `name`.png.
  void expectPainted(const TitledWindow& window, const std::string& name) const;
  /// Waits until a window has a colour at a place, in pixels from its upper left corner.
  void expectColour(const TitledWindow& window, int x, int y, std::uint32_t colour) const;
  /// Clicks at a place of the window, in pixels from its upper left corner, until below it the
  /// screen has changed as it does when a menu opens; keeps a picture, too.
  void expectMenu(const TitledWindow& window, int x, int y, const std::string& name) const;

  /// A path in a folder of the test's own, with blanks and letters that are not ASCII.
  std::string hardPath(const std::string& ending) const {
    return dir_ / ("my files/\xC3\xA4 b \xC3\xBC" + ending);
  }
  TempDir dir_;
  XServer xServer_;
  Screen screen_{xServer_};
  TestUser user_;

 private:
  std::string outputOf(const std::vector<std::string>& command) const;
  void keepPicture(const std::string& name) const;

  std::string folder_;
  std::string executable_;
  std::unique_ptr<BackgroundChild> running_;
};

}  // namespace quillory::testing
