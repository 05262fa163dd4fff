// Text: conversion without loss, and copies into callers' buffers.
#include "support/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/text.h"

namespace {

using namespace Quorvex;

TEST(Text, AnyBytesSurviveWideningAndNarrowing) {
  const std::vector<std::string> names = {
      "plain",
      "\xC3\xBC\xE2\x82\xAC\xF0\x9D\x84\x9E",  // 2, 3 and 4 bytes
      "\xFF\xFE",
      "\xC3",                  // cut off
      "\xC0\x80\xE0\x80\x80",  // not the shortest form
      "\xED\xA0\x80",          // a surrogate
      "\xED\xB2\x80",          // what an escaped byte would look like
      "\xF4\x90\x80\x80",      // beyond U+10FFFF
      "a\x80z\xE2\x82"};
  for (const std::string& name : names) {
    EXPECT_EQ(platform::Narrow(platform::Widen(name)), name);
  }
  EXPECT_EQ(platform::Widen("\xF0\x9D\x84\x9E"), L"\U0001D11E");
  EXPECT_EQ(platform::Widen("a\x80\xFF"), std::wstring({L'a', wchar_t{0xDC80}, wchar_t{0xDCFF}}));
  EXPECT_EQ(platform::Narrow(std::wstring({wchar_t{0xD800}, L'b'})), "?b");
  EXPECT_EQ(platform::ToUtf16(L"a\U0001D11E"), u"a\U0001D11E");
}

TEST(Text, CopiesAreCutBetweenCharactersAndTerminated) {
  const std::wstring text = L"a\u00FC\u20ACz";  // 1, 2, 3 and 1 narrow characters
  struct Case {
    unsigned long capacity;
    const char* narrow;
    const wchar_t* wide;
  };
  const Case cases[] = {{1, "", L""},
                        {2, "a", L"a"},
                        {3, "a", L"a\u00FC"},
                        {4, "a\xC3\xBC", L"a\u00FC\u20AC"},
                        {6, "a\xC3\xBC", text.c_str()},
                        {7, "a\xC3\xBC\xE2\x82\xAC", text.c_str()},
                        {8, "a\xC3\xBC\xE2\x82\xACz", text.c_str()}};
  for (const Case& c : cases) {
    std::string narrow(16, '#');
    EXPECT_EQ(CopyText(text, narrow.data(), c.capacity), std::string(c.narrow).size() + 1);
    EXPECT_STREQ(narrow.c_str(), c.narrow);
    std::wstring wide(16, L'#');
    EXPECT_EQ(CopyText(text, wide.data(), c.capacity), std::wstring(c.wide).size() + 1);
    EXPECT_STREQ(wide.c_str(), c.wide);
  }
  char untouched = '#';
  EXPECT_EQ(CopyText(text, static_cast<char*>(nullptr), 5), 8U);
  EXPECT_EQ(CopyText(text, &untouched, 0), 8U);
  EXPECT_EQ(untouched, '#');
  EXPECT_EQ(CopyText(text, static_cast<wchar_t*>(nullptr), 0), 5U);
}

}  // namespace
