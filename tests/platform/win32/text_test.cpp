// Text: the ANSI code page, and copies into callers' buffers.
#include "support/text.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/text.h"

namespace {

using namespace Quorvex;

TEST(Text, TheCodePageAndWhatItCannotHold) {
  ASSERT_EQ(GetACP(), 1252U) << "these are the characters of Western Europe";
  EXPECT_EQ(platform::Widen("a\xFC\x80"), L"a\u00FC\u20AC");
  EXPECT_EQ(platform::Narrow(L"a\u00FC\u20AC"), "a\xFC\x80");
  // No best fit: U+0101 is not an "a".
  EXPECT_EQ(platform::Narrow(L"\u65E5\u0101"), "??");
  EXPECT_EQ(platform::ToUtf16(L"a\U0001D11E"), u"a\U0001D11E");
  EXPECT_EQ(platform::Widen(""), L"");
}

TEST(Text, CopiesAreCutAndTerminated) {
  const std::wstring text = L"a\u00FCz";
  for (unsigned long capacity = 1; capacity <= 4; ++capacity) {
    std::string narrow(8, '#');
    EXPECT_EQ(CopyText(text, narrow.data(), capacity), capacity);
    EXPECT_EQ(narrow.c_str(), std::string("a\xFCz").substr(0, capacity - 1));
    std::wstring wide(8, L'#');
    EXPECT_EQ(CopyText(text, wide.data(), capacity), capacity);
    EXPECT_EQ(wide.c_str(), text.substr(0, capacity - 1));
  }
  EXPECT_EQ(CopyText(text, static_cast<char*>(nullptr), 5), 4U);
}

}  // namespace
