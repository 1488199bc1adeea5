#include "packager/report/reporter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <vector>

namespace quillory::pack {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

const Finding kNote{Severity::kNote, "", "a note", {}, ""};
const Finding kWarning{Severity::kWarning, "", "a warning", {}, ""};
const Finding kError{Severity::kError, "rule", "an error", {"file", 3}, "mend it"};

class ReporterTest : public ::testing::Test {
 protected:
  // What a reporter with these options writes when `use` talks through it.
  template <typename Use>
  void report(ReporterOptions options, Use use) {
    out_.str("");
    err_.str("");
    Reporter reporter(out_, err_, options);
    use(reporter);
  }

  std::ostringstream out_, err_;
};

TEST_F(ReporterTest, WritesResultsToStandardOutputHoweverQuiet) {
  for (const Verbosity verbosity : {Verbosity::kQuiet, Verbosity::kNormal, Verbosity::kVerbose}) {
    report({verbosity}, [](Reporter& r) { r.result("the result"); });
    EXPECT_EQ(out_.str(), "the result\n");
    EXPECT_EQ(err_.str(), "");
  }
}

TEST_F(ReporterTest, WritesLinesToStandardErrorUnlessQuiet) {
  const auto talk = [](Reporter& r) {
    r.line("a line");
    r.detail("a detail");
  };
  report({Verbosity::kQuiet}, talk);
  EXPECT_EQ(err_.str(), "");
  report({Verbosity::kNormal}, talk);
  EXPECT_EQ(err_.str(), "a line\n");
  report({Verbosity::kVerbose}, talk);
  EXPECT_EQ(err_.str(), "a line\na detail\n");
  EXPECT_EQ(out_.str(), "");
}

TEST_F(ReporterTest, ShowsFindingsByTheirSeverity) {
  const auto talk = [](Reporter& r) { r.findings({kNote, kWarning, kError}); };
  const std::string error = "file:3: error: an error [rule]\n  -> mend it\n";
  report({Verbosity::kQuiet}, talk);
  EXPECT_EQ(err_.str(), error);
  report({Verbosity::kNormal}, talk);
  EXPECT_EQ(err_.str(), "warning: a warning\n" + error);
  report({Verbosity::kVerbose}, talk);
  EXPECT_EQ(err_.str(), "note: a note\nwarning: a warning\n" + error);
  EXPECT_EQ(out_.str(), "");
}

TEST_F(ReporterTest, SaysAllInOneDocumentWithJson) {
  report({Verbosity::kVerbose, true, true}, [](Reporter& r) {
    const Progress progress{100, {50}};
    r.line("a line");
    r.detail("a detail");
    r.result("the result");
    r.value("bundle", "Hello.app");
    r.value("sizes", nlohmann::ordered_json{1, 2});
    r.progress("packing", progress);
    r.endProgress();
    r.findings({kNote, kError});
    r.finish("bundle", 3);
  });
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(out_.str(),
            "{\n"
            "  \"command\": \"bundle\",\n"
            "  \"status\": 3,\n"
            "  \"bundle\": \"Hello.app\",\n"
            "  \"sizes\": [\n"
            "    1,\n"
            "    2\n"
            "  ],\n"
            "  \"findings\": [\n"
            "    {\n"
            "      \"severity\": \"note\",\n"
            "      \"rule\": \"\",\n"
            "      \"what\": \"a note\",\n"
            "      \"file\": \"\",\n"
            "      \"line\": 0,\n"
            "      \"advice\": \"\"\n"
            "    },\n"
            "    {\n"
            "      \"severity\": \"error\",\n"
            "      \"rule\": \"rule\",\n"
            "      \"what\": \"an error\",\n"
            "      \"file\": \"file\",\n"
            "      \"line\": 3,\n"
            "      \"advice\": \"mend it\"\n"
            "    }\n"
            "  ]\n"
            "}\n");
}

TEST_F(ReporterTest, KeepsFindingsForTheDocumentThatItWouldNotShow) {
  report({Verbosity::kQuiet, true}, [](Reporter& r) {
    r.findings({kNote, kWarning});
    r.finish("doctor", 0);
  });
  EXPECT_EQ(Json::parse(out_.str())["findings"].size(), 2u);
}

TEST_F(ReporterTest, WritesADocumentWithoutFindingsAndOfNamesThatAreNotUtf8) {
  report({Verbosity::kNormal, true}, [](Reporter& r) {
    r.value("file", "a\xff");
    r.finish("inspect", 0);
  });
  EXPECT_EQ(Json::parse(out_.str())["file"], "a\xef\xbf\xbd");
  EXPECT_EQ(Json::parse(out_.str())["findings"], Json::array());
}

TEST_F(ReporterTest, WritesNoDocumentWithoutJson) {
  report({}, [](Reporter& r) {
    r.value("bundle", "Hello.app");
    r.finish("bundle", 0);
  });
  EXPECT_EQ(out_.str() + err_.str(), "");
}

TEST_F(ReporterTest, DrawsABarOnATerminalOnly) {
  const auto draw = [](Reporter& r) {
    const Progress progress{2000000, {500000}};
    r.progress("packing", progress);
  };
  report({Verbosity::kNormal, false, true}, draw);
  EXPECT_EQ(err_.str(), "\rpacking [#######.......................] 25% of 2.0 MB");
  for (const ReporterOptions& options : {ReporterOptions{Verbosity::kNormal, false, false},
                                         ReporterOptions{Verbosity::kQuiet, false, true},
                                         ReporterOptions{Verbosity::kNormal, true, true}}) {
    report(options, draw);
    EXPECT_EQ(err_.str(), "");
  }
}

// Keeps the pieces in which something is written.
class PiecesBuffer : public std::streambuf {
 public:
  std::vector<std::string> pieces;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    pieces.emplace_back(text, static_cast<std::size_t>(size));
    return size;
  }
  int_type overflow(int_type character) override {
    pieces.emplace_back(1, traits_type::to_char_type(character));
    return character;
  }
};

// What is written is seen at once, on a stream without a buffer of its own.
TEST_F(ReporterTest, DrawsTheBarInOnePiece) {
  PiecesBuffer buffer;
  std::ostream terminal(&buffer);
  terminal << std::unitbuf;
  Reporter reporter(out_, terminal, {Verbosity::kNormal, false, true});
  reporter.progress("packing", Progress{100, {50}, "7 s left"});
  EXPECT_THAT(buffer.pieces, ::testing::ElementsAre(HasSubstr("50% of 100 bytes, 7 s left")));
}

TEST_F(ReporterTest, SaysHowLongItTakesStill) {
  report({Verbosity::kNormal, false, true}, [](Reporter& r) {
    const Progress progress{100, {50}, "7 s left"};
    r.progress("packing", progress);
  });
  EXPECT_EQ(err_.str(),
            "\rpacking [###############...............] 50% of 100 bytes, 7 s left\033[K");
}

TEST_F(ReporterTest, DrawsNoBarOfNothingAndNoneThatIsOverfull) {
  report({Verbosity::kNormal, false, true}, [](Reporter& r) {
    const Progress nothing{0, {0}};
    r.progress("packing", nothing);
  });
  EXPECT_EQ(err_.str(), "");
  report({Verbosity::kNormal, false, true}, [](Reporter& r) {
    const Progress overfull{10, {25}};
    r.progress("packing", overfull);
  });
  EXPECT_EQ(err_.str(), "\rpacking [" + std::string(30, '#') + "] 100% of 10 bytes");
}

TEST_F(ReporterTest, WipesTheBarOnceBeforeWhateverComesNext) {
  const std::string wipe = "\r\033[K";
  const auto afterABar = [&](auto use) {
    report({Verbosity::kNormal, false, true}, [&](Reporter& r) {
      const Progress progress{10, {5}};
      r.progress("packing", progress);
      err_.str("");
      use(r);
    });
    return err_.str();
  };
  EXPECT_EQ(afterABar([](Reporter& r) { r.endProgress(); }), wipe);
  EXPECT_EQ(afterABar([](Reporter& r) {
              r.endProgress();
              r.endProgress();
            }),
            wipe);
  EXPECT_EQ(afterABar([](Reporter& r) { r.line("a line"); }), wipe + "a line\n");
  EXPECT_EQ(afterABar([](Reporter& r) { r.finding(kWarning); }), wipe + "warning: a warning\n");
  EXPECT_EQ(afterABar([](Reporter& r) { r.finding(kNote); }), "") << "it is not shown";
  EXPECT_EQ(afterABar([](Reporter& r) { r.result("the result"); }), wipe);
  report({Verbosity::kNormal, false, true}, [](Reporter& r) { r.endProgress(); });
  EXPECT_EQ(err_.str(), "") << "there was none";
}

TEST(Reporter, DrawsABarOnTerminalsOnly) {
  Progress progress;
  progress.total = 2'000'000;
  progress.done = 500'000;
  std::ostringstream out, err;
  Reporter terminal(out, err, {Verbosity::kNormal, false, true});
  terminal.progress("packing", progress);
  EXPECT_EQ(err.str(), "\rpacking [#######.......................] 25% of 2.0 MB");
  terminal.line("next");
  EXPECT_THAT(err.str(), HasSubstr("\r\033[Knext\n"));
  std::ostringstream plain;
  Reporter file(out, plain, {});
  file.progress("packing", progress);
  file.endProgress();
  EXPECT_EQ(plain.str(), "");
}

TEST(ReadableSize, HasAUnitThatPeopleRead) {
  EXPECT_EQ(readableSize(0), "0 bytes");
  EXPECT_EQ(readableSize(999), "999 bytes");
  EXPECT_EQ(readableSize(1000), "1.0 kB");
  EXPECT_EQ(readableSize(999'949), "999.9 kB");
  EXPECT_EQ(readableSize(999'950), "1.0 MB");
  EXPECT_EQ(readableSize(12'345'678'901), "12.3 GB");
}

TEST(ReadableSize, HasThreeOrMoreDigitsAndAUnitOfThousands) {
  static constexpr struct {
    std::uint64_t bytes;
    const char* text;
  } kCases[] = {{0, "0 bytes"},
                {999, "999 bytes"},
                {1000, "1.0 kB"},
                {1049, "1.0 kB"},
                {12345, "12.3 kB"},
                {999949, "999.9 kB"},
                {999950, "1.0 MB"},
                {1000000, "1.0 MB"},
                {12300000000, "12.3 GB"},
                {7000000000000, "7.0 TB"},
                {18446744073709551615u, "18.4 EB"}};
  for (const auto& [bytes, text] : kCases) {
    EXPECT_EQ(readableSize(bytes), text) << bytes;
  }
}

}  // namespace
}  // namespace quillory::pack
