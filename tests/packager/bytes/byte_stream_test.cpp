#include "packager/bytes/byte_stream.h"

#include <gtest/gtest.h>

#include <thread>

namespace quillory::pack {
namespace {

std::string readToItsEnd(ByteStream& stream) {
  std::string all;
  for (std::string_view block = stream.read(); !block.empty(); block = stream.read()) all += block;
  return all;
}

TEST(ByteStream, HandsOnWhatAnotherThreadMakes) {
  ByteStream stream;
  std::string made;
  std::thread maker([&] {
    for (int i = 0; i < 3'000; ++i) {
      const std::string more(static_cast<std::size_t>(i % 250), static_cast<char>('a' + i % 26));
      made += more;
      stream.append(more);
    }
    stream.end();
  });
  const std::string read = readToItsEnd(stream);
  maker.join();
  EXPECT_EQ(read, made);
  EXPECT_EQ(stream.all(), made);
  EXPECT_EQ(stream.read(), "");
}

TEST(ByteStream, MayHaveEndedBeforeItIsRead) {
  ByteStream stream;
  const std::string large(200'000, 'x');
  stream.append(large);
  stream.end();
  EXPECT_EQ(readToItsEnd(stream), large);
  ByteStream none;
  none.end();
  EXPECT_EQ(none.read(), "");
}

TEST(ByteStream, WaitsForBytesAndForTheEnd) {
  ByteStream stream;
  stream.append("ab");
  EXPECT_EQ(stream.read(), "ab");
  std::thread maker([&] {
    stream.append("");
    stream.append("c");
    stream.end();
  });
  EXPECT_EQ(stream.read(), "c");
  EXPECT_EQ(stream.read(), "");
  maker.join();
}

}  // namespace
}  // namespace quillory::pack
