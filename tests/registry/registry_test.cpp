// The registry's rules, through the exported functions.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/fake_media.h"

namespace {

using namespace Quorvex;
using tests::FakeFactory;

using Factories = std::vector<const CMediaFileFactory*>;

class Registry : public testing::Test {
 protected:
  void SetUp() override {
    MediaAccessorRegistryClear();
    allBuiltIn = FactoryList();
    bool isDefault = false;
    ASSERT_EQ(MediaAccessorRegistryGetFactory("au", 0, builtIn, isDefault), QVERR_OK);
  }
  void TearDown() override { MediaAccessorRegistryClear(); }

  template <class Text>
  Factories Candidates(const Text* path) {
    Factories found;
    const CMediaFileFactory* factory = nullptr;
    bool isDefault = false;
    for (unsigned long i = 0;
         MediaAccessorRegistryGetFactory(path, i, factory, isDefault) == QVERR_OK; ++i) {
      found.push_back(factory);
    }
    return found;
  }

  static Factories FactoryList() {
    Factories list(GetMediaFileFactoryCount());
    for (unsigned long i = 0; i < list.size(); ++i) GetMediaFileFactory(i, list[i]);
    return list;
  }

  // The built-in factories and then others.
  Factories BuiltInAnd(const Factories& others) {
    Factories list = allBuiltIn;
    list.insert(list.end(), others.begin(), others.end());
    return list;
  }

  static void ClearExtensions() {
    for (const std::wstring& key : Extensions()) MediaAccessorRegistryClear(key.c_str(), false);
  }

  static std::vector<std::wstring> Extensions() {
    std::vector<std::wstring> keys;
    for (unsigned long i = 0; i < MediaAccessorRegistryGetExtensionCount(); ++i) {
      keys.push_back(TextOf<wchar_t>([i](wchar_t* buffer, unsigned long capacity) {
        return MediaAccessorRegistryGetExtension(i, buffer, capacity);
      }));
    }
    return keys;
  }

  Factories allBuiltIn;
  const CMediaFileFactory* builtIn = nullptr;  // the one for .au
  FakeFactory a{{L"au"}};
  FakeFactory b{{L"au"}};
  FakeFactory d;
};

TEST_F(Registry, TheLastAddedIsTriedFirst) {
  EXPECT_EQ(MediaAccessorRegistryAdd(&a), QVERR_OK);
  EXPECT_EQ(MediaAccessorRegistryAdd(&b), QVERR_OK);
  EXPECT_EQ(Candidates("x.au"), (Factories{&b, &a, builtIn}));
  EXPECT_EQ(MediaAccessorRegistryAdd(&a), QVERR_OK);
  EXPECT_EQ(Candidates(L"x.au"), (Factories{&a, &b, builtIn}));
  EXPECT_EQ(FactoryList(), BuiltInAnd({&a, &b, &a}));
  EXPECT_EQ(MediaAccessorRegistryOverride("AU", builtIn), QVERR_OK);
  EXPECT_EQ(Candidates("x.au"), (Factories{builtIn, &a, &b}));
  EXPECT_EQ(MediaAccessorRegistryClear(), QVERR_OK);
  EXPECT_EQ(MediaAccessorRegistryAdd(&b), QVERR_OK);
  EXPECT_EQ(FactoryList(), BuiltInAnd({&b})) << "the built-in ones come back before it";
  EXPECT_EQ(Candidates("x.au"), (Factories{&b, builtIn}));
}

TEST_F(Registry, WhatCannotBeAddedOrFound) {
  struct ThrowingFactory : FakeFactory {
    unsigned long GetExtensionCount() const override { throw std::runtime_error("count"); }
  } throwing;
  EXPECT_EQ(MediaAccessorRegistryAdd(&throwing), QVERR_CREATE_FAILED);
  const CMediaFileFactory* factory = &a;
  bool isDefault = false;
  EXPECT_EQ(MediaAccessorRegistryAdd(nullptr), QVERR_NO_SOURCE);
  EXPECT_EQ(MediaAccessorRegistryOverride("au", nullptr), QVERR_NO_SOURCE);
  EXPECT_EQ(MediaAccessorRegistryOverride(L"au", nullptr), QVERR_NO_SOURCE);
  EXPECT_EQ(MediaAccessorRegistrySetDefault(nullptr), QVERR_NO_SOURCE);
  EXPECT_EQ(MediaAccessorRegistryGetFactory("x.au", 1, factory, isDefault), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(factory, nullptr);
  EXPECT_EQ(GetMediaFileFactory(GetMediaFileFactoryCount(), factory), QVERR_INVALID_ARGUMENT);
  const unsigned long count = MediaAccessorRegistryGetExtensionCount();
  EXPECT_EQ(MediaAccessorRegistryGetExtension(count, static_cast<char*>(nullptr), 0), 0U);
}

TEST_F(Registry, KeysAreFoldedNarrowly) {
  struct Case {
    const wchar_t* extension;
    const wchar_t* key;
  };
  const Case cases[] = {
      {L"WAV", L"wav"},
      {L".Wav", L"wav"},
      {L"C:\\dir\\Take.Wav", L"wav"},
      {L"C:\\dir.x\\Name", L"name"},
      {L"a.b.C", L"c"},
      {L"trailing.", L""},
      {L"\u00C1\u00C9\u00CD\u00D1\u00D3\u00DA\u00DC",
       L"\u00E1\u00E9\u00ED\u00F1\u00F3\u00FA\u00FC"},
      {L"\u00C4\u00C0\u00D6\u0391", L"\u00C4\u00C0\u00D6\u0391"},  // kept: not among the seven
  };
  for (const Case& c : cases) {
    ClearExtensions();
    ASSERT_EQ(MediaAccessorRegistryOverride(c.extension, &a), QVERR_OK);
    EXPECT_EQ(Extensions(), std::vector<std::wstring>{c.key});
  }
}

TEST_F(Registry, KeysAreOrderedBySixteenBitCodes) {
  // U+10000 is D800 DC00 in 16-bit codes, so it stands before U+FFFD, whatever the size of wchar_t.
  const std::vector<std::wstring> ordered = {L"a",      L"aa",         L"b",
                                             L"\u00C4", L"\U00010000", L"\uFFFD"};
  ClearExtensions();
  for (auto key = ordered.rbegin(); key != ordered.rend(); ++key) {
    ASSERT_EQ(MediaAccessorRegistryOverride(key->c_str(), &a), QVERR_OK);
  }
  EXPECT_EQ(Extensions(), ordered);
}

TEST_F(Registry, GetExtensionReturnsTheCopiedLengthPlusOne) {
  char narrow[8] = "#######";
  wchar_t wide[8] = L"#######";
  ClearExtensions();
  MediaAccessorRegistryOverride("wav", &a);
  EXPECT_EQ(MediaAccessorRegistryGetExtension(0, narrow, 8), 4U);
  EXPECT_STREQ(narrow, "wav");
  EXPECT_EQ(MediaAccessorRegistryGetExtension(0, wide, 3), 3U);
  EXPECT_STREQ(wide, L"wa");
  EXPECT_EQ(MediaAccessorRegistryGetExtension(0, static_cast<wchar_t*>(nullptr), 0), 4U);
}

TEST_F(Registry, DefaultsFollowAndExclude) {
  EXPECT_EQ(MediaAccessorRegistrySetDefault(&d, "mp3"), QVERR_OK);
  EXPECT_EQ(MediaAccessorRegistrySetDefault(&a), QVERR_OK);
  EXPECT_EQ(Candidates("a.mp3"), Factories{&a});
  EXPECT_EQ(Candidates("a.ogg"), (Factories{&d, &a}));
  EXPECT_EQ(Candidates("a.au"), (Factories{builtIn, &d, &a}));
  // Set again it moves to the end and keeps what it excludes.
  EXPECT_EQ(MediaAccessorRegistrySetDefault(&d, L".OGG"), QVERR_OK);
  EXPECT_EQ(Candidates("a.au"), (Factories{builtIn, &a, &d}));
  EXPECT_EQ(Candidates("a.mp3"), Factories{&a});
  EXPECT_EQ(Candidates("a.ogg"), Factories{&a});
  // A default that stands in the extension's own list is not repeated.
  EXPECT_EQ(MediaAccessorRegistryOverride("au", &d), QVERR_OK);
  EXPECT_EQ(Candidates("a.au"), (Factories{&d, builtIn, &a}));
  EXPECT_EQ(MediaAccessorRegistryClearDefaults(), QVERR_OK);
  EXPECT_EQ(Candidates("a.ogg"), Factories{});
}

TEST_F(Registry, IsDefaultIsOnlyEverSet) {
  const CMediaFileFactory* factory = nullptr;
  MediaAccessorRegistrySetDefault(&d);
  bool isDefault = false;
  EXPECT_EQ(MediaAccessorRegistryGetFactory("au", 0, factory, isDefault), QVERR_OK);
  EXPECT_FALSE(isDefault);
  EXPECT_EQ(MediaAccessorRegistryGetFactory("au", 1, factory, isDefault), QVERR_OK);
  EXPECT_TRUE(isDefault);
  EXPECT_EQ(MediaAccessorRegistryGetFactory("au", 0, factory, isDefault), QVERR_OK);
  EXPECT_TRUE(isDefault) << "the flag is not cleared for a specific candidate";
}

TEST_F(Registry, ClearingAnExtension) {
  MediaAccessorRegistrySetDefault(&d);
  EXPECT_EQ(MediaAccessorRegistryClear("x.AU", false), QVERR_OK);
  EXPECT_EQ(Candidates("a.au"), Factories{&d});
  EXPECT_EQ(MediaAccessorRegistryClear(L"au", true), QVERR_OK);
  EXPECT_EQ(Candidates("a.au"), Factories{});
  EXPECT_EQ(Candidates("a.other"), Factories{&d});
  // A default that is set later has not been told.
  MediaAccessorRegistrySetDefault(&a);
  EXPECT_EQ(Candidates("a.au"), Factories{&a});
}

TEST_F(Registry, AliasesCopyCandidatesOrTakeEverything) {
  FakeFactory old;
  MediaAccessorRegistryAdd(&a);
  MediaAccessorRegistrySetDefault(&d);
  MediaAccessorRegistryOverride("take", &old);
  EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias("au", ""), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias(L"au", nullptr), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias(".AU", ".Take"), QVERR_OK);
  EXPECT_EQ(Candidates("x.take"), (Factories{&a, builtIn, &d, &old}));
  MediaAccessorRegistryOverride("au", &b);
  EXPECT_EQ(Candidates("x.take"), (Factories{&a, builtIn, &d, &old})) << "no link stays";
  // Without an extension the whole factory list, the most recently added first; d stays a default.
  MediaAccessorRegistryAdd(&b);
  EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias("", "any"), QVERR_OK);
  Factories expected = BuiltInAnd({&a, &b});
  std::reverse(expected.begin(), expected.end());
  Factories withDefault = expected;
  withDefault.push_back(&d);
  EXPECT_EQ(Candidates("x.any"), withDefault);
  // The same for an extension without candidates.
  MediaAccessorRegistryClearDefaults();
  EXPECT_EQ(MediaAccessorRegistryAddExtensionAlias("none", "other"), QVERR_OK);
  EXPECT_EQ(Candidates("x.other"), expected);
}

TEST_F(Registry, BuiltInFactoriesDescribeThemselves) {
  wchar_t wide[64];
  char narrow[64];
  EXPECT_EQ(builtIn->GetDescription(narrow, 7), 7U);
  EXPECT_STREQ(narrow, "Sun AU");
  EXPECT_EQ(builtIn->GetExtensionCount(), 1U);
  EXPECT_EQ(builtIn->GetExtension(0, static_cast<wchar_t*>(nullptr), 0), 2U) << "the bare length";
  EXPECT_EQ(builtIn->GetExtension(0, wide, 64), 2U);
  EXPECT_STREQ(wide, L"AU");
  EXPECT_EQ(builtIn->GetExtension(0, narrow, 2), 2U);
  EXPECT_STREQ(narrow, "A");
  EXPECT_EQ(builtIn->GetExtension(1, narrow, 64), 0U);
}

TEST(Version, NumbersAndTextWithItsDoubledRevision) {
  int numbers[4] = {};
  EXPECT_EQ(MediaAccessorGetLibraryVersion(numbers[0], numbers[1], numbers[2], numbers[3]),
            QVERR_OK);
  EXPECT_EQ(std::vector<int>(numbers, numbers + 4), (std::vector<int>{9, 0, 0, 288}));
  wchar_t wide[64];
  char narrow[64];
  EXPECT_EQ(MediaAccessorGetLibraryVersion(wide, 64), QVERR_OK);
  EXPECT_STREQ(wide, L"9.0.0.288 (185833).288");
  EXPECT_EQ(MediaAccessorGetLibraryVersion(narrow, 5), QVERR_OK);
  EXPECT_STREQ(narrow, "9.0.");
}

}  // namespace
