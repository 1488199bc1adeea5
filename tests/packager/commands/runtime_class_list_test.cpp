#include "packager/commands/runtime_class_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/packager/hello_config.h"
#include "tests/packager/rules_of.h"

namespace quillory::pack {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using testing::readFile;
using testing::rulesOf;
using testing::writeFile;

constexpr char kPacked[] = "Contents/Home/lib/classlist";

class RuntimeClassList : public testing::HelloConfig {
 protected:
  RuntimeClassList() {
    config_.runtime.source = RuntimeSource::kFolder;
    writeFile(dir_ / "jre/lib/classlist", "java/lang/Object\n");
  }

  // The list as it is packed.
  std::string packed() {
    ContentTree tree("runtime");
    tree.addFolderContent(dir_ / "jre", "Contents/Home");
    Reporter reporter(said_, said_, {Verbosity::kVerbose, false, false});
    addClassList(config_, {QUILLORY_UPDATER_JAR}, dir_ / "jre", tree, reporter);
    if (!tree.contains(kPacked)) {
      return "none";
    }
    const ContentEntry& list = tree.entries().at(kPacked);
    return list.kind == ContentEntry::Kind::kBytes ? list.bytes : readFile(list.source);
  }
  Findings rejection() {
    try {
      packed();
    } catch (const RejectedInput& e) {
      return e.findings();
    }
    return {};
  }

  std::ostringstream said_;
};

TEST_F(RuntimeClassList, IsTheRuntimesOwnWhereNobodyTrainedAndThereIsNoToolkit) {
  EXPECT_EQ(chosenClassList(config_, {QUILLORY_UPDATER_JAR}), "");
  EXPECT_EQ(packed(), "java/lang/Object\n");
}

TEST_F(RuntimeClassList, HasWhatTrainingHasLeftBesideTheConfiguration) {
  writeFile(dir_ / "quillory.classlist", "# kept\njava/util/Map\njava/lang/Object\n");
  EXPECT_EQ(packed(), "java/lang/Object\njava/util/Map\n");
  EXPECT_THAT(said_.str(), HasSubstr("archive of classes gets 1 more, from " + dir_.str() +
                                     "/quillory.classlist\n"));
  EXPECT_EQ(readFile(dir_ / "jre/lib/classlist"), "java/lang/Object\n") << "it is not ours";
}

TEST_F(RuntimeClassList, HasAReadyOneForTheToolkitWhereNobodyTrained) {
  config_.application.jars = {"hello.jar"};
  const std::string ready = chosenClassList(config_, {dir_ / "hello.jar"});
  EXPECT_THAT(ready, EndsWith("/class-lists/swing.classlist"));
  writeFile(dir_ / "quillory.classlist", "java/util/Map\n");
  EXPECT_EQ(chosenClassList(config_, {dir_ / "hello.jar"}), dir_ / "quillory.classlist");
}

TEST_F(RuntimeClassList, IsLeftAloneWhenThatIsAskedFor) {
  writeFile(dir_ / "quillory.classlist", "java/util/Map\n");
  config_.runtime.classList = "none";
  EXPECT_EQ(packed(), "java/lang/Object\n");
}

TEST_F(RuntimeClassList, IsExtendedByAFileThatIsNamed) {
  writeFile(dir_ / "quillory.classlist", "java/util/Map\n");
  writeFile(dir_ / "ours.list", "java/util/Set\n");
  config_.runtime.classList = dir_ / "ours.list";
  EXPECT_EQ(packed(), "java/lang/Object\njava/util/Set\n");
}

TEST_F(RuntimeClassList, OfARuntimeWithoutOneIsNotMade) {
  writeFile(dir_ / "quillory.classlist", "java/util/Map\n");
  std::filesystem::remove(dir_ / "jre/lib/classlist");
  EXPECT_EQ(packed(), "none");
}

TEST_F(RuntimeClassList, FilesThatAreNoneAreRefused) {
  config_.runtime.classList = dir_ / "missing.list";
  config_.places["runtime.class-list"] = {"quillory.toml", 14};
  EXPECT_EQ(rulesOf(rejection()), testing::Names{"missing-file"});
  EXPECT_EQ(rejection().at(0).place.line, 14u);
  writeFile(dir_ / "missing.list", "# nothing\n");
  EXPECT_EQ(rulesOf(rejection()), testing::Names{"class-list"});
  config_.places.erase("runtime.class-list");
  EXPECT_EQ(rejection().at(0).place.file, dir_ / "missing.list");
}

// The directory of a runtime without any class: tests/packager/reading/runtime_classes_test.cpp.
TEST_F(RuntimeClassList, NamesThatNoClassOfTheRuntimeHasAreLeftOutWithAWarning) {
  writeFile(dir_ / "jre/lib/modules",
            std::string("\xDA\xDA\xFE\xCA\0\0\1\0", 8) + std::string(20, '\0'));
  writeFile(dir_ / "quillory.classlist", "com/example/Own\n");
  EXPECT_EQ(packed(), "java/lang/Object\n");
  EXPECT_THAT(said_.str(), HasSubstr("warning: " + dir_.str() +
                                     "/quillory.classlist names no class that the runtime has "
                                     "[class-list]"));
}

}  // namespace
}  // namespace quillory::pack
