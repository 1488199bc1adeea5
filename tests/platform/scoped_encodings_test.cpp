#include "platform/gnustep/scoped_encodings.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <iconv.h>

#include "platform/gnustep/scoped_environment.h"
#include "tests/harness/child_process.h"
#include "tests/harness/temp_dir.h"

namespace quillory::platform {
namespace {

// 0, or why there is no converter.
int errorOf(const char* to, const char* from) {
  const iconv_t converter = iconv_open(to, from);
  if (converter == reinterpret_cast<iconv_t>(-1)) return errno;
  iconv_close(converter);
  return 0;
}

TEST(ScopedEncodings, HidesAllButUnicodeAndAscii) {
  const ScopedEnvironment locale("LC_ALL", "C.UTF-8");
  const ScopedEncodings scope;
  EXPECT_EQ(errorOf("UTF-8//TRANSLIT", "UTF-16LE"), 0);
  EXPECT_EQ(errorOf("UTF-16LE", "UTF-8"), 0);
  EXPECT_EQ(errorOf("ASCII", "UTF-16BE"), 0);
  EXPECT_EQ(errorOf("KOI8-R", "UTF-8"), EINVAL);
  EXPECT_EQ(errorOf("UTF-8", "KOI8-R"), EINVAL);
  EXPECT_EQ(errorOf("UTF-32//TRANSLIT", "UTF-16LE"), EINVAL);
}

TEST(ScopedEncodings, HidesNothingAfterTheScope) {
  const ScopedEnvironment locale("LC_ALL", "C.UTF-8");
  { const ScopedEncodings scope; }
  EXPECT_EQ(errorOf("KOI8-R", "UTF-8"), 0);
  EXPECT_EQ(errorOf("UTF-8", "no such encoding"), EINVAL);
}

TEST(ScopedEncodings, TakesALocaleThatIsNotThereForTheStandardOne) {
  const ScopedEnvironment locale("LC_ALL", "xx_XX.KOI8-R");
  const ScopedEncodings scope;
  EXPECT_EQ(errorOf("KOI8-R", "UTF-8"), EINVAL);
}

TEST(ScopedEncodings, HidesNothingFromAUserOfAnotherEncoding) {
  const testing::TempDir locales;
  const testing::ChildResult made =
      testing::runChild({"localedef", "-i", "ru_RU", "-f", "KOI8-R", locales / "ru_RU.KOI8-R"}, {});
  ASSERT_EQ(made.exitStatus, 0) << made.err;
  const ScopedEnvironment places("LOCPATH", locales.str().c_str());
  const ScopedEnvironment locale("LC_ALL", "ru_RU.KOI8-R");
  const ScopedEncodings scope;
  EXPECT_EQ(errorOf("KOI8-R", "UTF-8"), 0);
  EXPECT_EQ(errorOf("UTF-8", "BIG5"), 0);
}

}  // namespace
}  // namespace quillory::platform
