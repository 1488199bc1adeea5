#include "packager/content/start_command.h"

#include <gtest/gtest.h>

namespace quillory::pack {
namespace {

using Words = std::vector<std::string>;

std::optional<StartCommand> read(const std::string& text) {
  return readStartCommand(text, [](const std::string& name) {
    return name == "org.example.App" || name == "/usr/share/app/app.jar" || name == "app.jar";
  });
}

TEST(ReadStartCommand, KnowsTheMainClassTheOptionsAndTheArguments) {
  const auto command = read(
      "#!/bin/sh\n"
      "# java org.example.Other\n"
      "CLASSPATH=\"$BASEDIR\"/lib/*\n"
      "exec \"$JAVACMD\" $JAVA_OPTS -Xmx512M \\\n"
      "  -classpath \"$CLASSPATH\" \\\n"
      "  -Dapp.name=\"a b\" -Dapp.home=\"$BASEDIR\" \\\n"
      "  --add-opens java.base/java.lang=ALL-UNNAMED -ea \\\n"
      "  org.example.App --start 'the editor' \\\n"
      "  \"$@\" >/dev/null 2>&1\n"
      "echo \"it has ended\"\n");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->started, "org.example.App");
  EXPECT_EQ(command->options, (Words{"-Xmx512M", "-Dapp.name=a b", "-Dapp.home=$BASEDIR",
                                     "--add-opens=java.base/java.lang=ALL-UNNAMED", "-ea"}));
  EXPECT_EQ(command->arguments, (Words{"--start", "the editor"}));
}

TEST(ReadStartCommand, FollowsAVariableThatIsSetInTheScript) {
  for (const char* word : {"\"$MAIN\"", "$MAIN", "\"${MAIN}\""}) {
    const auto command = read("MAIN='org.example.App'\nif test -n x; then java -Xss2m " +
                              std::string(word) + " \"$@\"; fi\n");
    ASSERT_TRUE(command) << word;
    EXPECT_EQ(command->started, "org.example.App");
    EXPECT_EQ(command->options, Words{"-Xss2m"});
    EXPECT_EQ(command->arguments, Words{});
  }
  EXPECT_FALSE(read("java \"$MAIN\"\nMAIN=org.example.App\n")) << "not set yet";
}

TEST(ReadStartCommand, KnowsAJarThatIsStarted) {
  const auto command = read("JAR=/usr/share/app/app.jar\njava -Xmx64m -jar \"$JAR\" \"$@\"");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->started, "/usr/share/app/app.jar");
  EXPECT_EQ(command->options, Words{"-Xmx64m"});
  EXPECT_FALSE(read("cp app.jar elsewhere\n"));
}

TEST(ReadStartCommand, KnowsACommandThatIsPutTogetherFirst) {
  const auto command = read(
      "set -- \\\n        -classpath \"$CLASSPATH\" \\\n        org.example.App \\\n        "
      "\"$@\"\nexec \"$JAVACMD\" \"$@\"\n");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->options, Words{});
  EXPECT_EQ(command->arguments, Words{});
}

TEST(ReadStartCommand, HasTheLastOfSeveral) {
  const auto command = read("java -client org.example.App\njava -server org.example.App\n");
  ASSERT_TRUE(command);
  EXPECT_EQ(command->options, Words{"-server"});
}

TEST(ReadStartCommand, SaysNothingOfWhatItDoesNotKnow) {
  for (const char* text :
       {"", "\\", "'", "\"", "java", "java org.example.Other", "# java org.example.App",
        "MAIN=org.example.App", "-jar", "java -cp", "#", "$", "${}", "="}) {
    EXPECT_FALSE(read(text)) << text;
  }
}

TEST(ReadStartCommand, TakesAScriptThatIsCutShort) {
  const std::string text = "M=org.example.App\njava \\\n -cp 'a b' --add-opens x $M \"$@\" # end";
  for (std::size_t length = 0; length <= text.size(); ++length) {
    const auto command = read(text.substr(0, length));
    EXPECT_TRUE(!command || command->started == "org.example.App") << length;
  }
}

}  // namespace
}  // namespace quillory::pack
