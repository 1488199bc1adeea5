// A project whose installations look for updates, and the releases that are made of it.
#pragma once
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "formats/release_list.h"
#include "packager/commands/release.h"
#include "packager/config/config.h"
#include "packager/keys/public_key.h"
#include "packager/keys/signing_key.h"
#include "packager/writing/release_list_writer.h"
#include "tests/packager/project_fixture.h"

namespace quillory::testing {

/// 2026-11-22 04:36 UTC, when the first release is made unless a test says otherwise.
inline constexpr std::int64_t kSomeTime = 1'795'322'160;

class ReleasedProject : public ::testing::Test {
 protected:
  ReleasedProject() {
    for (const char* name : {"quillory-update", "quillory-update-window"}) {
      writeFile(project_ / name, std::string("\x7f") + "ELF " + name);
    }
  }

  /// Of version `version`; `application` has more lines of [application], `update` of [update],
  /// behind which other tables may follow.
  std::string config(int version, const std::string& application = "",
                     const std::string& update = "") const {
    std::string text = project_.config(application);
    text.replace(text.find("version = 3"), 11, "version = " + std::to_string(version));
    text.insert(text.find("launcher ="),
                "quillory-update = \"quillory-update\"\n"
                "quillory-update-window = \"quillory-update-window\"\n");
    return text + "[update]\nurl = \"https://example.com/\"\nmode = \"background\"\n" + update;
  }

  pack::Config loaded(const std::string& text) const {
    pack::Findings ignored;
    return pack::loadConfig(project_.writeConfig(text), ignored);
  }

  pack::ReleaseOptions options() const {
    pack::ReleaseOptions options;
    options.bundle.output = project_ / "dist";
    options.bundle.compression = 0;
    options.bundle.target = pack::Target::kLinux;
    options.now = kSomeTime;
    return options;
  }

  /// What makeRelease() makes of it, warnings aside.
  pack::ReleaseResult release(const std::string& text) { return release(text, options()); }
  pack::ReleaseResult release(const std::string& text, const pack::ReleaseOptions& options) {
    std::ostringstream out;
    pack::Reporter reporter(out, said_, {});
    return pack::makeRelease(loaded(text), options, reporter);
  }
  /// The rule and the words of what is refused; "" when nothing is.
  std::string refusal(const std::string& text) { return refusal(text, options()); }
  std::string refusal(const std::string& text, const pack::ReleaseOptions& options) {
    try {
      release(text, options);
    } catch (const pack::RejectedInput& e) {
      return asText(e.findings().at(0));
    } catch (const pack::PackError& e) {
      return asText(e.finding());
    }
    return "";
  }

  std::string releasePath(const std::string& name) const {
    return project_ / "dist/release/" + name;
  }
  /// The list in force, as a client reads it that trusts the key of the project.
  ReleaseList list(const std::string& channel = "stable") const {
    return listIn("Quillory-Hello-" + channel + "-releases");
  }
  ReleaseList listIn(const std::string& name) const {
    const ReleaseListVerdict verdict =
        readReleaseList(releasePath(name), {pack::PublicKey::load(Project::key()).hex()});
    EXPECT_TRUE(verdict.list.has_value()) << name << ": " << verdict.refusal;
    return verdict.list.value_or(ReleaseList{});
  }

  Project project_;
  std::ostringstream said_;  ///< what releases told on standard error
};

}  // namespace quillory::testing
