// The file layer's way of failing.
#pragma once

#include <MediaAccessor/result_code.h>

namespace tests {

/// What an operation throws; QVERR_OK for nothing.
template <class Operation>
Quorvex::QVERRORCODE_TAG ThrownCode(const Operation& operation) {
  try {
    operation();
    return Quorvex::QVERR_OK;
  } catch (Quorvex::QVERRORCODE_TAG code) {
    return code;
  }
}

}  // namespace tests
