#include "formats/release_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "formats/sha256.h"
#include "tests/formats/list_parts.h"
#include "tests/harness/page_example.h"

namespace quillory {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using testing::exampleList;
using testing::fromHex;
using ::testing::IsEmpty;
using testing::listValues;
using testing::pageExample;
using testing::signatureBlock;
using testing::signatureData;
using testing::TempDir;
using testing::withSignature;
using testing::writeFile;

// The records of the values behind a block that nobody checks, named by who is trusted: how a
// reader judges records, without a signature for each of them.
ReleaseListVerdict readNamed(const std::vector<std::string>& values) {
  const std::string bytes = withSignature(bytesOf(values), "list_working");
  return readSteppingStoneBytes(
      bytes, {"list", static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)});
}

std::string refusalWith(std::size_t index, const std::string& value) {
  std::vector<std::string> values = listValues();
  values.at(index) = value;
  const ReleaseListVerdict verdict = readNamed(values);
  EXPECT_NE(verdict.list.has_value(), !verdict.refusal.empty());
  return verdict.refusal;
}

const std::string kWorking = signatureData("key_working");
const std::string kReserve = signatureData("key_reserve");
const std::string kNext = signatureData("key_next");

std::string exampleBytes() { return withSignature(bytesOf(listValues()), "list_working"); }

TEST(ReadReleaseList, TakesTheExampleOfThePage) {
  const std::string page = pageExample("formats/release-list.md", 1);
  EXPECT_EQ(page, exampleBytes());
  EXPECT_EQ(pageExample("formats/release-list.md", 2), fromHex(kWorking));
  const ReleaseListVerdict verdict = readReleaseListBytes(page, {kReserve, kWorking});
  EXPECT_EQ(verdict.refusal, "");
  ASSERT_TRUE(verdict.list);
  EXPECT_EQ(*verdict.list, exampleList());
  EXPECT_THAT(verdict.signedBy, ElementsAre(kWorking));
  EXPECT_THAT(verdict.keysFromNowOn, IsEmpty());
}

TEST(ReadReleaseList, ReadsAFileAndFollowsNoLink) {
  TempDir dir;
  writeFile(dir / "list", exampleBytes());
  std::filesystem::create_symlink("list", dir / "link");
  EXPECT_TRUE(readReleaseList(dir / "list", {kWorking}).list);
  EXPECT_EQ(readReleaseList(dir / "link", {kWorking}).refusal, "it cannot be read");
  EXPECT_EQ(readReleaseList(dir / "missing", {kWorking}).refusal, "it cannot be read");
}

TEST(ReadReleaseList, TrustsNoOtherKey) {
  for (const std::vector<std::string>& keys :
       {std::vector<std::string>{}, {kReserve}, {kReserve, kNext}, {""}, {kWorking.substr(2)}}) {
    const ReleaseListVerdict verdict = readReleaseListBytes(exampleBytes(), keys);
    EXPECT_FALSE(verdict.list);
    EXPECT_EQ(verdict.refusal, "none of its signatures holds under a trusted key");
    EXPECT_THAT(verdict.signedBy, IsEmpty());
  }
}

TEST(ReadReleaseList, AsksBothSignatures) {
  const std::string bytes = withSignature(exampleBytes(), "list_then_reserve");
  EXPECT_THAT(readReleaseListBytes(bytes, {kWorking}).signedBy, ElementsAre(kWorking));
  EXPECT_THAT(readReleaseListBytes(bytes, {kReserve}).signedBy, ElementsAre(kReserve));
  EXPECT_THAT(readReleaseListBytes(bytes, {kNext, kReserve, kWorking}).signedBy,
              ElementsAre(kReserve, kWorking));
  EXPECT_FALSE(readReleaseListBytes(bytes, {kNext}).list);
}

TEST(ReadReleaseList, HasNoThirdSignature) {
  const std::string bytes = withSignature(
      withSignature(withSignature(bytesOf(listValues()), "list_then_reserve"), "list_working"),
      "list_then_reserve");
  EXPECT_FALSE(readReleaseListBytes(bytes, {kWorking, kReserve}).list);
}

TEST(ReadReleaseList, RefusesWhatIsCutAnywhere) {
  const std::string whole = exampleBytes();
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(readReleaseListBytes(whole.substr(0, length), {kWorking}).list) << length;
  const std::string both = withSignature(whole, "list_then_reserve");
  for (std::size_t length = 0; length < both.size(); ++length)
    EXPECT_EQ(readReleaseListBytes(both.substr(0, length), {kWorking}).list.has_value(),
              length == whole.size())
        << length;
}

TEST(ReadReleaseList, RefusesAByteThatChangedAnywhere) {
  const std::string whole = exampleBytes();
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string changed = whole;
    // Not the sixth bit, which makes the signature's digits capital letters, the same number.
    changed[at] = static_cast<char>(changed[at] ^ 1);
    EXPECT_FALSE(readReleaseListBytes(changed, {kWorking}).list) << at;
  }
}

TEST(ReadReleaseList, RefusesAByteMoreAnywhere) {
  const std::string whole = exampleBytes();
  for (std::size_t at = 0; at <= whole.size(); ++at) {
    std::string longer = whole;
    longer.insert(at, 1, '0');
    EXPECT_FALSE(readReleaseListBytes(longer, {kWorking}).list) << at;
  }
}

// Records that would end an attack are not even looked at.
TEST(ReadReleaseList, ReadsNoRecordBeforeASignatureHolds) {
  std::vector<std::string> values = listValues();
  values[0] = "99";
  const std::string bytes = withSignature(bytesOf(values), "list_working");
  EXPECT_EQ(readReleaseListBytes(bytes, {kWorking}).refusal,
            "none of its signatures holds under a trusted key");
  EXPECT_EQ(readReleaseListBytes(bytesOf(values), {kWorking}).refusal,
            "it does not end with a signature");
}

TEST(ReadReleaseList, RefusesWhatIsTooLong) {
  const std::string bytes(kMaxReleaseListBytes + 1, '\0');
  EXPECT_EQ(readReleaseListBytes(bytes, {kWorking}).refusal, "it has more than 262144 bytes");
  TempDir dir;
  writeFile(dir / "list", bytes + bytes);
  EXPECT_EQ(readReleaseList(dir / "list", {kWorking}).refusal, "it has more than 262144 bytes");
}

TEST(NextKeys, AreTakenOverWhenOneOfThemHasSigned) {
  const std::string rotation = bytesOf(listValues({kNext}));
  const std::string old = withSignature(rotation, "rotation_working");
  EXPECT_THAT(readReleaseListBytes(old, {kWorking}).list->nextKeys, ElementsAre(kNext));
  EXPECT_THAT(readReleaseListBytes(old, {kWorking}).keysFromNowOn, IsEmpty());
  const std::string both = withSignature(old, "rotation_then_next");
  EXPECT_THAT(readReleaseListBytes(both, {kWorking}).keysFromNowOn, ElementsAre(kNext));
  EXPECT_THAT(readReleaseListBytes(both, {kWorking}).signedBy, ElementsAre(kWorking));
  EXPECT_FALSE(readReleaseListBytes(both, {kReserve}).list);
}

TEST(NextKeys, MayBeTheOnesThatAreTrusted) {
  const std::string bytes = withSignature(bytesOf(listValues({kNext})), "rotation_next");
  EXPECT_FALSE(readReleaseListBytes(bytes, {kWorking, kReserve}).list);
  EXPECT_THAT(readReleaseListBytes(bytes, {kNext}).keysFromNowOn, ElementsAre(kNext));
}

TEST(ReadSteppingStone, TrustsWhatWasNamedWhoeverSignedIt) {
  const std::string bytes = exampleBytes();
  const ReleaseFile named{"old", static_cast<std::int64_t>(bytes.size()), sha256Hex(bytes)};
  const ReleaseListVerdict verdict = readSteppingStoneBytes(bytes, named);
  ASSERT_TRUE(verdict.list);
  EXPECT_EQ(*verdict.list, exampleList());
  EXPECT_THAT(verdict.signedBy, IsEmpty());
  TempDir dir;
  writeFile(dir / "old", bytes);
  EXPECT_TRUE(readSteppingStone(dir / "old", named).list);
  EXPECT_FALSE(readSteppingStone(dir / "missing", named).list);
}

TEST(ReadSteppingStone, RefusesAnyOther) {
  const std::string bytes = exampleBytes();
  const auto length = static_cast<std::int64_t>(bytes.size());
  const std::string hash = sha256Hex(bytes);
  const char kOther[] = "it is not the list that was named";
  EXPECT_EQ(readSteppingStoneBytes(bytes, {"old", length + 1, hash}).refusal, kOther);
  EXPECT_EQ(readSteppingStoneBytes(bytes + "x", {"old", length, hash}).refusal, kOther);
  EXPECT_EQ(readSteppingStoneBytes(bytes, {"old", length, sha256Hex("x")}).refusal, kOther);
  EXPECT_EQ(readSteppingStoneBytes(bytes, {}).refusal, kOther);
  const std::string unsignedBytes = bytesOf(listValues());
  EXPECT_EQ(
      readSteppingStoneBytes(unsignedBytes, {"old", static_cast<std::int64_t>(unsignedBytes.size()),
                                             sha256Hex(unsignedBytes)})
          .refusal,
      "it does not end with a signature");
}

TEST(ReleaseListRecords, AreRefusedBeyondTheirLimits) {
  static const struct {
    std::size_t index;
    std::string value;
    const char* refusal;
  } kCases[] = {
      {0, "2", "Release List VER: the list was made by a newer quillory-pack"},
      {0, "", "Release List VER: it is no plain number"},
      {1, "", "List Application: it is no plain file name"},
      {1, "../x", "List Application: it is no plain file name"},
      {2, "", "List Channel: it is no channel's name"},
      {2, "a/b", "List Channel: it is no channel's name"},
      {3, ".", "List Platform: it is no plain file name"},
      {4, "0", "Release Number: releases begin with 1"},
      {4, "-1", "Release Number: it is no plain number"},
      {4, "1000000000000000", "Release Number: it has more than 15 bytes"},
      {5, "x", "Issued: it is no plain number"},
      {6, "1e9", "Expires: it is no plain number"},
      {7, "2.", "Minimum System: it is no version of a system"},
      {7, ".2", "Minimum System: it is no version of a system"},
      {7, "2..3", "Minimum System: it is no version of a system"},
      {7, "x", "Minimum System: it is no version of a system"},
      {8, "", "Minimum From: it is no plain number"},
      {9, "a/b", "Stepping Stone: it is no plain file name"},
      {9, "name", "Stepping Stone Length: it is not the length of a list"},
      {10, "1", "Stepping Stone: it is no plain file name"},
      {10, "262145", "Stepping Stone Length: it is more than 262144"},
      {11, std::string(64, 'a'), "Stepping Stone: it is no plain file name"},
      {12, "-2", "Critical Below: it is no plain number"},
      {13, "", "Rollout Start: it is no plain number"},
      {14, "3651", "Rollout Days: it is more than 3650"},
      {15, "101", "Rollout Percent: it is more than 100"},
      {16, "1001", "Withdrawn Count: it is more than 1000"},
      {16, "2", "Withdrawn Archive: it is no text"},
      {16, "0", "Next Key: it is no text"},
      {17, std::string(64, 'A'), "Withdrawn Archive: it is no SHA-256"},
      {18, "..", "Withdrawn Version: it is no version"},
      {19, "\x1B[2J", "Notes: it is no text"},
      {19, std::string(65537, 'x'), "Notes: it has more than 65536 bytes"},
      {20, "5", "Key Count: it is more than 4"},
      {20, "1", "Next Key: it is no key in hexadecimal"},
      {21, "0", "Component Count: a release has at least one"},
      {21, "4", "Component Count: it is more than 3"},
      {21, "2", "Component Role: the file ends here"},
      {22, "Application", "Component Role: it is unknown, or stands twice or too late"},
      {23, "Other", "Component Name: the list is another application's"},
      {24, "", "Component Version: it is no version"},
      {24, std::string(51, '1'), "Component Version: it is no version"},
      {25, "a\nb", "Shown Version: it is no text"},
      {26, "../x", "Archive File: it is no plain file name"},
      {26, ".hidden", "Archive File: it is no plain file name"},
      {26, "a\\b", "Archive File: it is no plain file name"},
      {26, std::string(256, 'x'), "Archive File: it has more than 255 bytes"},
      {27, "0", "Archive Length: the file is empty"},
      {28, "a1", "Archive SHA-256: it is no SHA-256"},
      {29, "", "Plain Length: it is no plain number"},
      {30, std::string(64, 'g'), "Plain SHA-256: it is no SHA-256"},
      {31, "+1", "Installed Length: it is no plain number"},
      {32, "51", "Delta Count: it is more than 50"},
      {32, "2", "Delta Base Version: the file ends here"},
      {32, "0", "Component Count: more follows than it counts"},
      {33, "a/b", "Delta Base Version: it is no version"},
      {34, "", "Delta Base SHA-256: it is no SHA-256"},
      {35, "", "Delta File: it is no plain file name"},
      {36, "0", "Delta Length: the file is empty"},
      {37, "", "Delta SHA-256: it is no SHA-256"},
      {38, "0x1", "Delta Memory: it is no plain number"},
  };
  for (const auto& [index, value, refusal] : kCases) {
    EXPECT_EQ(refusalWith(index, value), refusal) << index << ' ' << value;
  }
}

TEST(ReleaseListRecords, AreRefusedWhenOneIsMissingOrTooMany) {
  const std::size_t count = listValues().size();
  for (std::size_t at = 0; at < count; ++at) {
    std::vector<std::string> values = listValues();
    values.erase(values.begin() + static_cast<std::ptrdiff_t>(at));
    EXPECT_FALSE(readNamed(values).list) << "without record " << at;
    values = listValues();
    values.insert(values.begin() + static_cast<std::ptrdiff_t>(at), "%");
    EXPECT_FALSE(readNamed(values).list) << "with one more at " << at;
  }
  std::vector<std::string> values = listValues();
  values.push_back("");
  EXPECT_EQ(readNamed(values).refusal, "Component Count: more follows than it counts");
}

TEST(ReleaseListRecords, MayBeAtTheirLimits) {
  for (const auto& [index, value] :
       std::initializer_list<std::pair<std::size_t, std::string>>{{1, std::string(255, 'x')},
                                                                  {7, ""},
                                                                  {7, "14"},
                                                                  {14, "3650"},
                                                                  {15, "0"},
                                                                  {19, std::string(65536, 'x')},
                                                                  {19, ""},
                                                                  {25, ""},
                                                                  {26, std::string(255, 'x')},
                                                                  {38, "999999999999999"}}) {
    std::vector<std::string> values = listValues();
    values[index] = value;
    if (index == 1) values[23] = value;
    EXPECT_EQ(readNamed(values).refusal, "") << index;
  }
}

// Role, name, version, and the rest of the example's component without deltas.
void append(std::vector<std::string>& values, const char* role, const char* name) {
  const std::vector<std::string> example = listValues();
  values.insert(values.end(), {role, name});
  values.insert(values.end(), example.begin() + 24, example.begin() + 32);
  values.push_back("0");
}

ReleaseListVerdict readWithRoles(std::initializer_list<const char*> roles) {
  std::vector<std::string> values = listValues();
  values.resize(21);
  values.push_back(std::to_string(roles.size()));
  for (const char* role : roles) append(values, role, "Hello");
  return readNamed(values);
}

TEST(ReleaseListRecords, HaveEachRoleOnceInOrder) {
  const ReleaseListVerdict all = readWithRoles({"updater", "runtime", "application"});
  EXPECT_EQ(all.refusal, "");
  ASSERT_TRUE(all.list);
  ASSERT_EQ(all.list->components.size(), 3u);
  EXPECT_EQ(componentOf(*all.list, kRuntimeRole), &all.list->components[1]);
  EXPECT_TRUE(readWithRoles({"runtime"}).list);
  EXPECT_TRUE(readWithRoles({"updater", "application"}).list);
  EXPECT_EQ(componentOf(*readWithRoles({"runtime"}).list, kApplicationRole), nullptr);
  for (const auto& roles : std::initializer_list<std::initializer_list<const char*>>{
           {"application", "runtime"},
           {"runtime", "runtime"},
           {"application", "application"},
           {"runtime", "updater", "application"},
           {""}})
    EXPECT_EQ(readWithRoles(roles).refusal,
              "Component Role: it is unknown, or stands twice or too late");
}

TEST(ReleaseListName, IsThatOnTheServer) {
  EXPECT_EQ(releaseListName("My App", "stable"), "Quillory-My App-stable-releases");
  EXPECT_EQ(keptReleaseListName("My App", "beta", 12), "Quillory-My App-beta-releases-12");
}

TEST(IsChannelName, TakesWhatIsTheSameInAnAddress) {
  for (const char* name : {"stable", "beta-2", "A_b.c", "1"}) EXPECT_TRUE(isChannelName(name));
  for (const std::string& name :
       {std::string(), std::string(".a"), std::string("a b"), std::string("a/b"),
        std::string("\xC3\xA9"), std::string("a%20"), std::string(51, 'a')})
    EXPECT_FALSE(isChannelName(name)) << name;
  EXPECT_TRUE(isChannelName(std::string(50, 'a')));
}

}  // namespace
}  // namespace quillory
