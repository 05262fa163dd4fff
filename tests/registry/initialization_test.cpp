// What the licence forms of initialisation keep, and a registration that fails.
#include <MediaAccessor/library.h>
#include <gtest/gtest.h>

#include "registry/factory_registry.h"
#include "registry/licence_data.h"

namespace {

using namespace Quorvex;

TEST(Initialization, LicenceFormsKeepWhatTheyAreGiven) {
  EXPECT_EQ(InitializeMediaAccessorLibrary("licensee", nullptr), QVERR_OK);
  EXPECT_EQ(StoredLicenceData().licensee, L"licensee");
  EXPECT_EQ(StoredLicenceData().key, L"");
  EXPECT_EQ(InitializeMediaAccessorLibrary(L"another", L"\u00FC"), QVERR_OK);
  EXPECT_EQ(StoredLicenceData().licensee, L"another");
  EXPECT_EQ(StoredLicenceData().key, L"\u00FC");
  const auto query = [](const char*, unsigned long&) { return QVERR_OK; };
  const auto check = [](const char*) { return QVERR_NOT_LICENSED; };
  EXPECT_EQ(InitializeMediaAccessorLibrary(query, check), QVERR_OK);
  ASSERT_NE(StoredLicenceData().check, nullptr);
  EXPECT_EQ(StoredLicenceData().check("G729"), QVERR_NOT_LICENSED);
  EXPECT_NE(StoredLicenceData().query, nullptr);
  EXPECT_EQ(StoredLicenceData().licensee, L"another");
}

TEST(Initialization, AFailedRegistrationIsReportedAndNotRepeated) {
  static int calls = 0;
  FactoryRegistry registry([](FactoryRegistry&) -> QVERRORCODE_TAG {
    ++calls;
    throw std::bad_alloc();
  });
  EXPECT_EQ(registry.Initialize(), QVERR_CREATE_FAILED);
  EXPECT_EQ(registry.Initialize(), QVERR_CREATE_FAILED);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(registry.Clear(), QVERR_OK);
  EXPECT_EQ(registry.Initialize(), QVERR_CREATE_FAILED);
  EXPECT_EQ(calls, 2);
}

}  // namespace
