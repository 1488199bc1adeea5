#include "packager/bytes/piecewise_lzma_sink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>

#include "packager/report/findings.h"
#include "tests/harness/unpacked_lzma.h"

namespace quillory::pack {
namespace {

using testing::unpackedLzma;

std::string content(std::size_t size) {
  std::mt19937 random(7);
  std::string text;
  while (text.size() < size) text += "line " + std::to_string(random() % 5'000) + '\n';
  text.resize(size);
  return text;
}

LzmaTuning tuning() {
  LzmaTuning result;
  result.dictionary = std::size_t{1} << 20;
  return result;
}

std::string packed(const std::string& text, const std::vector<LzmaCut>& cuts, unsigned slotCount,
                   std::size_t atOnce, std::atomic<std::size_t>* seen = nullptr) {
  StringSink out;
  PieceSlots slots(slotCount);
  PiecewiseLzmaSink sink(3, out, tuning(), cuts, slots, [&](std::size_t, std::size_t more) {
    if (seen != nullptr) *seen += more;
  });
  for (std::size_t at = 0; at < text.size(); at += atOnce) {
    sink.write(std::string_view(text).substr(at, atOnce));
  }
  sink.finish();
  return out.bytes();
}

TEST(PiecewiseLzmaSink, MakesTheSameStreamHoweverManyAreAtWork) {
  const std::string text = content(400'000);
  const std::vector<LzmaCut> cuts = {{96'000, 4'096}, {200'000, 0}, {256'000, 100'000}};
  std::atomic<std::size_t> seen = 0;
  const std::string stream = packed(text, cuts, 1, 1'000, &seen);
  EXPECT_TRUE(unpackedLzma(stream) == text);
  std::size_t expected = text.size();
  for (const std::size_t piece : {96'000, 104'000, 56'000, 144'000})
    expected += piece / kSplicedShare;
  for (const std::size_t known : {4'096, 56'000}) expected += known / kKnownShare;
  EXPECT_EQ(seen, expected);
  EXPECT_TRUE(packed(text, cuts, 4, 400'000) == stream);
  EXPECT_TRUE(packed(text, cuts, 2, 7) == stream);
}

TEST(PiecewiseLzmaSink, TakesContentThatIsShorterThanItsCuts) {
  EXPECT_EQ(unpackedLzma(packed("short", {{96'000, 0}}, 2, 2)), "short");
  EXPECT_EQ(unpackedLzma(packed("", {}, 2, 1)), "");
}

TEST(PiecewiseLzmaSink, PassesOnWhatItsWatchThrowsAndGivesItsSlotBack) {
  StringSink out;
  PieceSlots slots(1);
  const std::string text = content(600'000);
  for (int i = 0; i < 2; ++i) {
    PiecewiseLzmaSink sink(1, out, tuning(), {{304'000, 0}}, slots,
                           [](std::size_t, std::size_t more) {
                             if (more > 0) throw std::runtime_error("stop");
                           });
    EXPECT_THROW(
        {
          sink.write(text);
          sink.finish();
        },
        std::runtime_error);
  }
  const PieceSlots::Turn turn(slots, 1);  // would wait for ever
}

TEST(PiecewiseLzmaSink, TakesFromItsStoreWhatIsKeptThere) {
  const std::string text = content(300'000);
  const std::vector<LzmaCut> cuts = {{96'000, 4'096}, {200'000, 0}};
  const std::string expected = packed(text, cuts, 2, 1'000);
  std::mutex mutex;
  std::map<std::string, std::string> kept;
  std::atomic<int> found = 0;
  const PieceStore store = {[&](std::size_t, const LzmaPiece& piece, ByteSink& to) {
                              const std::lock_guard lock(mutex);
                              const auto at = kept.find(piece.bytes);
                              if (at == kept.end()) return false;
                              to.write(at->second);
                              ++found;
                              return true;
                            },
                            [&](const LzmaPiece& piece, const std::string& bytes) {
                              const std::lock_guard lock(mutex);
                              kept[piece.bytes] = bytes;
                            }};
  const auto packedWithStore = [&](const std::string& changed) {
    StringSink out;
    PieceSlots slots(2);
    PiecewiseLzmaSink sink(
        3, out, tuning(), cuts, slots, [](std::size_t, std::size_t) {}, store);
    sink.write(changed);
    sink.finish();
    return out.bytes();
  };
  EXPECT_TRUE(packedWithStore(text) == expected);
  EXPECT_EQ(kept.size(), 3u);
  EXPECT_EQ(found, 0);
  EXPECT_TRUE(packedWithStore(text) == expected);
  EXPECT_EQ(found, 3);
  std::string changed = text;
  changed[250'000] = 'x';
  EXPECT_TRUE(packedWithStore(changed) == packed(changed, cuts, 1, 1'000));
  EXPECT_EQ(found, 5);
  kept.begin()->second.resize(100);
  EXPECT_THROW(packedWithStore(text), PackError) << "a store has to know what is whole";
}

TEST(PiecewiseLzmaSink, SaysWhatThePlaceOfTheStreamSays) {
  struct Full : ByteSink {
    void write(std::string_view) override { throw PackError("full"); }
  } full;
  PieceSlots slots(1);
  PiecewiseLzmaSink sink(1, full, tuning(), {{96'000, 0}}, slots, [](std::size_t, std::size_t) {});
  try {
    sink.write(content(200'000));
    sink.finish();
    FAIL();
  } catch (const PackError& e) {
    EXPECT_STREQ(e.what(), "full");
  }
  const auto all = {slots.hold(), slots.hold(), slots.hold()};  // would wait for ever
  EXPECT_EQ(all.size(), 3u);
}

TEST(PiecewiseLzmaSink, RefusesLevelsThatThereAreNot) {
  StringSink out;
  PieceSlots slots(1);
  PiecewiseLzmaSink sink(10, out, tuning(), {}, slots, [](std::size_t, std::size_t) {});
  sink.write("x");
  EXPECT_THROW(sink.finish(), PackError);
}

}  // namespace
}  // namespace quillory::pack
