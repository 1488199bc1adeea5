#include "tests/real_applications/real_application.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace quillory::testing {
namespace {

namespace fs = std::filesystem;

// Other programs are at work, too, and a first start makes archives of classes.
constexpr std::chrono::seconds kPatience{240};
constexpr std::chrono::milliseconds kPause{200};
constexpr int kTitleBars = 4;  ///< no colours of a window that has something in it
constexpr WindowAt kWholeScreen = {0, 0, 1024, 768};

template <typename Condition>
bool happens(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(kPause);
  }
  return true;
}

// The part of a window that is on the screen.
WindowAt onScreen(const WindowAt& at) {
  const int x = std::max(at.x, 0), y = std::max(at.y, 0);
  return {x, y, std::min(at.x + at.width, kWholeScreen.width) - x,
          std::min(at.y + at.height, kWholeScreen.height) - y};
}

// The number of colours, and the share of the most frequent one in percent.
std::pair<std::size_t, int> coloursOf(const Picture& picture) {
  std::map<std::uint32_t, int> counts;
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x) ++counts[picture.at(x, y)];
  int most = 0;
  for (const auto& [colour, count] : counts) most = std::max(most, count);
  return {counts.size(), 100 * most / std::max(picture.width() * picture.height(), 1)};
}

int changedPercent(const Picture& before, const Picture& after) {
  int changed = 0;
  for (int y = 0; y < before.height(); ++y)
    for (int x = 0; x < before.width(); ++x) changed += before.at(x, y) != after.at(x, y);
  return 100 * changed / std::max(before.width() * before.height(), 1);
}

}  // namespace

// On the test's own screen; "" where it fails.
std::string RealApplication::outputOf(const std::vector<std::string>& command) const {
  ChildOptions options;
  options.environment = {{"DISPLAY", xServer_.display()}, {"LC_ALL", "C.UTF-8"}};
  const ChildResult result = runChild(command, options);
  return result.exitStatus == 0 ? result.out : "";
}

void RealApplication::run(const std::vector<std::string>& command) {
  ChildOptions options;
  options.environment = {{"LC_ALL", "C.UTF-8"},
                         {"QUILLORY_PACK_CACHE", QUILLORY_APPLICATIONS_FOLDER "/cache"}};
  options.directory = folder_;
  options.limit = std::chrono::seconds(400);
  const ChildResult result = runChild(command, options);
  EXPECT_EQ(result.exitStatus, 0) << ::testing::PrintToString(command) << '\n'
                                  << result.out << result.err;
}

void RealApplication::unpack(const std::string& installed,
                             const std::vector<std::string>& leftOut) {
  if (!fs::exists(installed))
    GTEST_SKIP() << installed << " is missing; scripts/setup.sh applications installs it";
  folder_ = dir_ / fs::path(installed).filename().string();
  fs::copy(installed, folder_, fs::copy_options::recursive);
  for (const std::string& name : leftOut) fs::remove_all(fs::path(folder_) / name);
}

void RealApplication::pack() {
  run({QUILLORY_PACK, "init"});
  run({QUILLORY_PACK, "keygen", "--bits", "2048"});
  run({QUILLORY_PACK, "bundle", "--compression", "0"});
  ASSERT_FALSE(HasFailure());
  findBundle();
}

void RealApplication::findBundle() {
  for (const auto& entry : fs::directory_iterator(fs::path(folder_) / "dist"))
    if (entry.path().extension() == ".app")
      for (const auto& program : fs::directory_iterator(entry.path() / "Contents/MacOS"))
        executable_ = program.path().string();
}

void RealApplication::start(const std::vector<std::string>& arguments) {
  end();
  ChildOptions options = user_.options();
  options.environment["DISPLAY"] = xServer_.display();
  options.limit = std::chrono::seconds(900);
  std::vector<std::string> command = {executable_};
  command.insert(command.end(), arguments.begin(), arguments.end());
  running_ = std::make_unique<BackgroundChild>(command, options);
}

std::string RealApplication::end() {
  if (!running_) return "";
  running_->sendSignal(SIGTERM);
  const ChildResult result = running_->finish();
  running_.reset();
  EXPECT_EQ(result.exitStatus, 128 + SIGTERM) << result.err;
  return result.out;
}

TitledWindow RealApplication::window(const std::string& title) const {
  TitledWindow found;
  const bool isThere = happens([&] {
    std::istringstream ids(outputOf({"xdotool", "search", "--onlyvisible", "--name", title}));
    for (std::string id; std::getline(ids, id);) {
      std::istringstream geometry(outputOf({"xdotool", "getwindowgeometry", "--shell", id}));
      std::map<std::string, int> values;
      for (std::string line; std::getline(geometry, line);) {
        const std::size_t equals = line.find('=');
        if (equals != line.npos) values[line.substr(0, equals)] = std::atoi(&line[equals + 1]);
      }
      // Toolkits have windows of a few pixels with the title of the application.
      if (values["WIDTH"] < 100 || values["HEIGHT"] < 100) continue;
      found = {id,
               outputOf({"xdotool", "getwindowname", id}),
               {values["X"], values["Y"], values["WIDTH"], values["HEIGHT"]}};
      found.title.erase(found.title.find_last_not_of('\n') + 1);
      return true;
    }
    return false;
  });
  if (!isThere) {
    keepPicture("missing");
    throw std::runtime_error("no window " + title + "; there are\n" +
                             outputOf({"xwininfo", "-root", "-tree"}) + running_->err());
  }
  return found;
}

void RealApplication::keepPicture(const std::string& name) const {
  fs::create_directories(QUILLORY_APPLICATIONS_FOLDER);
  outputOf({"import-im6.q16", "-window", "root",
            std::string(QUILLORY_APPLICATIONS_FOLDER "/") +
                ::testing::UnitTest::GetInstance()->current_test_info()->name() + "-" + name +
                ".png"});
}

void RealApplication::expectPainted(const TitledWindow& window, const std::string& name) const {
  std::pair<std::size_t, int> colours;
  EXPECT_TRUE(happens([&] {
    colours = coloursOf(screen_.grab(onScreen(window.place)));
    return colours.first > kTitleBars && colours.second < 97;
  })) << window.title
      << ": " << colours.first << " colours, one of them on " << colours.second << " %";
  keepPicture(name);
}

void RealApplication::expectColour(const TitledWindow& window, int x, int y,
                                   std::uint32_t colour) const {
  EXPECT_TRUE(happens([&] {
    return screen_.grab({window.place.x + x, window.place.y + y, 1, 1}).at(0, 0) == colour;
  }));
}

void RealApplication::expectMenu(const TitledWindow& window, int x, int y,
                                 const std::string& name) const {
  const WindowAt below =
      onScreen({window.place.x + std::max(x - 100, 0), window.place.y + y + 15, 150, 100});
  int changed = 0;
  int looks = 0;
  Picture before(1, 1);
  EXPECT_TRUE(happens([&] {
    if (looks++ % 10 == 0) {
      before = screen_.grab(below);
      outputOf({"xdotool", "mousemove", std::to_string(window.place.x + x),
                std::to_string(window.place.y + y), "click", "1"});
    }
    changed = changedPercent(before, screen_.grab(below));
    return changed > 8;  // A caret that blinks is less than one.
  })) << "below the menu "
      << changed << " % have changed";
  keepPicture(name);
}

}  // namespace quillory::testing
