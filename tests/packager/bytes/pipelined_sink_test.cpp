#include "packager/bytes/pipelined_sink.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

TEST(PipelinedSink, HandsOverEverythingInOrder) {
  StringSink end;
  std::string expected;
  {
    PipelinedSink pipe(end);
    for (int i = 0; i < 200000; ++i) {
      const std::string piece = std::to_string(i) + ',';
      pipe.write(piece);
      expected += piece;
    }
    pipe.finish();
  }
  EXPECT_EQ(end.bytes(), expected);
}

TEST(PipelinedSink, TakesNothingAtAll) {
  StringSink end;
  PipelinedSink pipe(end);
  pipe.finish();
  EXPECT_EQ(end.bytes(), "");
}

class FailingSink : public ByteSink {
 public:
  void write(std::string_view) override { throw PackError("the disk is full"); }
};

TEST(PipelinedSink, ThrowsWhatTheNextSinkThrewAndDoesNotHang) {
  FailingSink end;
  PipelinedSink pipe(end);
  const std::string block(100000, 'x');
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i) {
          pipe.write(block);
        }
      },
      PackError);
  PipelinedSink atTheEnd(end);
  atTheEnd.write("x");
  EXPECT_THROW(atTheEnd.finish(), PackError);
}

TEST(PipelinedSink, CanBeLeftInTheMiddle) {
  const std::string block(1000000, 'x');
  StringSink end;
  {
    PipelinedSink pipe(end);
    pipe.write(block);
    pipe.write("the rest");
  }
  // The block may have come through before, but nothing is sent after it.
  EXPECT_TRUE(end.bytes().empty() || end.bytes() == block) << end.bytes().size();
}

}  // namespace
}  // namespace quillory::pack
