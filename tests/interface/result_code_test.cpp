// Result codes as text: every value of the enumeration has one, nothing else does.
#include <MediaAccessor/result_code.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace Quorvex;

TEST(ResultCode, EveryValueHasItsOwnName) {
  const std::set<int> values = {0,   10,  300, 301, 302, 304, 305, 306, 307, 308, 309, 310, 311,
                                404, 405, 406, 600, 603, 604, 605, 609, 610, 614, 619, 704, 715};
  std::set<std::string> names;
  for (int value = -1; value <= 1000; ++value) {
    const auto code = static_cast<QVERRORCODE_TAG>(value);
    const std::string name = MediaAccessorGetResultName(code);
    EXPECT_EQ(name != "QVERR_UNKNOWN", values.count(value) == 1) << value;
    if (values.count(value) == 1) {
      EXPECT_TRUE(names.insert(name).second) << name;
    }
    const std::wstring wideName = MediaAccessorGetResultNameWide(code);
    EXPECT_EQ(std::wstring(name.begin(), name.end()), wideName);
    const std::string meaning = MediaAccessorGetResultMeaning(code);
    EXPECT_EQ(std::wstring(meaning.begin(), meaning.end()),
              MediaAccessorGetResultMeaningWide(code));
  }
  EXPECT_STREQ(MediaAccessorGetResultName(QVERR_BAD_FORMAT), "QVERR_BAD_FORMAT");
  EXPECT_STREQ(MediaAccessorGetResultMeaning(QVERR_BAD_FORMAT),
               "not of this format, or cannot be decoded");
}

}  // namespace
