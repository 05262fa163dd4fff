// Result codes as text: every value has the name that is published for it, nothing else has one.
#include <MediaAccessor/result_code.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using namespace Quorvex;

TEST(ResultCode, NamesAndMeanings) {
  const std::map<int, std::string> names = {
      {0, "QVERR_OK"},
      {1, "QVERR_NO_SINK"},
      {10, "QVERR_NO_CHANNEL_MAP"},
      {300, "QVERR_FILE_OPEN_FAILED"},
      {301, "QVERR_FILE_IO"},
      {302, "QVERR_READ_PAST_END"},
      {304, "QVERR_FILE_CREATE_FAILED"},
      {305, "QVERR_FILE_WRITE_FAILED"},
      {306, "QVERR_BAD_FILE_NAME"},
      {307, "QVERR_FILE_NOT_FOUND"},
      {308, "QVERR_PATH_NOT_FOUND"},
      {309, "QVERR_ACCESS_DENIED"},
      {310, "QVERR_FILE_NOT_OPEN"},
      {311, "QVERR_ALREADY_OPEN"},
      {404, "QVERR_NO_SOURCE"},
      {405, "QVERR_INVALID_ARGUMENT"},
      {406, "QVERR_NO_SAMPLING_FREQUENCY"},
      {600, "QVERR_CREATE_FAILED"},
      {603, "QVERR_BAD_STATE"},
      {604, "QVERR_BUSY"},
      {605, "QVERR_BAD_FORMAT"},
      {609, "QVERR_UNSUPPORTED_CHANNELS"},
      {610, "QVERR_BAD_TRACK"},
      {614, "QVERR_MONO_ONLY"},
      {619, "QVERR_BAD_CHANNEL_COUNT"},
      {704, "QVERR_NOT_LICENSED"},
      {715, "QVERR_CODEC_NOT_LICENSED"},
  };
  for (int value = -1; value <= 1000; ++value) {
    const auto code = static_cast<QVERRORCODE_TAG>(value);
    const auto expected = names.find(value);
    const std::string name = MediaAccessorGetResultName(code);
    EXPECT_EQ(name, expected == names.end() ? "QVERR_UNKNOWN" : expected->second);
    EXPECT_EQ(std::wstring(name.begin(), name.end()), MediaAccessorGetResultNameWide(code));
    const std::string meaning = MediaAccessorGetResultMeaning(code);
    EXPECT_EQ(meaning == "unknown result code", expected == names.end()) << value;
    EXPECT_EQ(std::wstring(meaning.begin(), meaning.end()),
              MediaAccessorGetResultMeaningWide(code));
  }
  EXPECT_STREQ(MediaAccessorGetResultMeaning(QVERR_BAD_FORMAT),
               "not of this format, or cannot be decoded");
}

}  // namespace
