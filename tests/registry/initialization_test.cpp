// A registration that fails.
#include <gtest/gtest.h>

#include "registry/factory_registry.h"

namespace {

using namespace Quorvex;

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
