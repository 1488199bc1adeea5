#include "packager/bytes/raw_lzma2_sink.h"

#include <gtest/gtest.h>

#include "packager/report/findings.h"

namespace quillory::pack {
namespace {

std::string undone(const std::string& bytes, const std::string& known) {
  std::string plain;
  RawLzma2Decoder decoder(4096, [&](const unsigned char* data, std::size_t size) {
    plain.append(reinterpret_cast<const char*>(data), size);
    return true;
  });
  EXPECT_TRUE(decoder.know(known) && decoder.write(bytes.data(), bytes.size()) && decoder.finish())
      << decoder.error();
  return plain;
}

TEST(RawLzma2Sink, CompressesWhatGoesThroughIt) {
  StringSink out;
  RawLzma2Sink sink(4096, 2, "what is known already", out);
  sink.write("something of ");
  sink.write("");
  sink.write("what is known already");
  sink.finish();
  EXPECT_EQ(undone(out.bytes(), "what is known already"), "something of what is known already");
}

TEST(RawLzma2Sink, ThrowsWhatIsWrong) {
  StringSink out;
  EXPECT_THROW(RawLzma2Sink(4095, 2, "", out), PackError);
  EXPECT_THROW(RawLzma2Sink(4096, 10, "", out), PackError);
  RawLzma2Sink sink(4096, 2, "", out);
  sink.finish();
  EXPECT_THROW(sink.write("more"), PackError);
}

class RefusingSink : public ByteSink {
 public:
  void write(std::string_view) override { throw PackError("full"); }
};

TEST(RawLzma2Sink, PassesOnWhatTheNextSinkThrows) {
  RefusingSink full;
  RawLzma2Sink sink(4096, 2, "", full);
  EXPECT_THROW(
      {
        sink.write("x");
        sink.finish();
      },
      PackError);
}

}  // namespace
}  // namespace quillory::pack
