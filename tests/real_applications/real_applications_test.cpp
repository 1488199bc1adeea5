// Applications of the distribution. Each start takes seconds: these tests have a label of their
// own, and run when somebody asks for them (scripts/test.sh --applications).
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/real_applications/real_application.h"

namespace quillory::testing {
namespace {

using ::testing::HasSubstr;

constexpr char kWarm[] = "[Extractor] Running without extraction now\n";

// Swing; a jar with folders that it expects beside it.
TEST_F(RealApplication, JEdit) {
  unpack("/usr/share/jedit");
  if (IsSkipped()) return;
  pack();
  const std::string file = hardPath(".txt");
  writeFile(file, "nine letters\n");
  start({file});
  expectPainted(window("jEdit - \xC3\xA4 b \xC3\xBC.txt"), "first");
  end();

  start({file});
  const TitledWindow second = window("jEdit - \xC3\xA4 b \xC3\xBC.txt");
  expectPainted(second, "second");
  expectMenu(second, 15, 10, "menu");
  EXPECT_THAT(end(), HasSubstr(kWarm));
}

// Swing; exports of the JDK that its manifest asks for.
TEST_F(RealApplication, Josm) {
  unpack("/usr/share/josm", {"josm.jar"});
  if (IsSkipped()) return;
  pack();
  const std::string file = hardPath(".osm");
  writeFile(file,
            "<osm version=\"0.6\"><node id=\"1\" version=\"1\" lat=\"1\" lon=\"2\"/></osm>\n");
  // Else it asks the network, and windows say in front of its own that there is none.
  start({"--offline=all", file});
  expectPainted(window("Java OpenStreetMap Editor"), "first");
  end();

  start({"--offline=all", file});
  const TitledWindow second = window("Java OpenStreetMap Editor");
  // The file has a map, which is black around its one node; without it there is a light page.
  expectColour(second, 300, 300, 0x000000);
  expectPainted(second, "second");
  expectMenu(second, 15, 10, "menu");
  EXPECT_THAT(end(), HasSubstr(kWarm));
}

// JavaFX; jars in lib/, a start script that says what is started.
TEST_F(RealApplication, Pdfsam) {
  unpack("/usr/share/pdfsam");
  if (IsSkipped()) return;
  pack();
  start();
  expectPainted(window("PDF Split and Merge"), "first");
  end();

  start();
  const TitledWindow second = window("PDF Split and Merge");
  expectPainted(second, "second");
  expectMenu(second, 652, 28, "menu");
  EXPECT_THAT(end(), HasSubstr(kWarm));
}

// SWT; jars elsewhere that the manifest names.
TEST_F(RealApplication, Stegosuite) {
  unpack("/usr/share/stegosuite");
  if (IsSkipped()) return;
  pack();
  const std::string picture = hardPath(".png");
  writeFile(picture, "");
  ASSERT_EQ(runChild({"convert-im6.q16", "-size", "400x300", "gradient:red-blue", "-depth", "8",
                      "png24:" + picture})
                .exitStatus,
            0);
  start({"gui", picture});
  expectPainted(window("Stegosuite"), "first");
  end();

  start({"gui", picture});
  const TitledWindow second = window("Stegosuite");
  expectPainted(second, "second");
  expectMenu(second, 20, 10, "menu");
  const std::string log = end();
  EXPECT_THAT(log, HasSubstr("Loading png image from " + picture));
  EXPECT_THAT(log, HasSubstr(kWarm));
}

// Swing in a module of its own that requires a plain jar; examples/maven, by the recipe of
// docs/packaging.md, with the plugins of the distribution and without a network.
TEST_F(RealApplication, MavenExample) {
  unpack(QUILLORY_EXAMPLES "/maven");
  if (!std::filesystem::exists("/usr/share/maven-repo/org/codehaus/mojo/exec-maven-plugin"))
    GTEST_SKIP() << "Maven's plugins are missing; scripts/setup.sh applications installs them";
  // Maven writes beside what it reads.
  const std::string repository = dir_ / "repository";
  run({"cp", "-rs", "/usr/share/maven-repo", repository});
  run({QUILLORY_PACK, "keygen", "--bits", "2048"});
  run({"mvn", "--batch-mode", "--offline", "-Dmaven.repo.local=" + repository,
       "-Dquillory-pack=" QUILLORY_PACK, "package"});
  ASSERT_FALSE(HasFailure());
  findBundle();
  const std::string file = hardPath("");
  start({file});
  expectPainted(window("Pages of com.example.pages: " + file), "first");
  end();

  start({file, "\xE4\xBD\xA0\xE5\xA5\xBD"});
  const TitledWindow second = window("Pages of com.example.pages: " + file + ", .");
  EXPECT_EQ(second.title, "Pages of com.example.pages: " + file + ", \xE4\xBD\xA0\xE5\xA5\xBD");
  expectPainted(second, "second");
  expectMenu(second, 15, 10, "menu");
  EXPECT_THAT(end(), HasSubstr(kWarm));
}

}  // namespace
}  // namespace quillory::testing
