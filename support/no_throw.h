// The border that no exception crosses.
#pragma once

#include <exception>

#include <MediaAccessor/result_code.h>

namespace Quorvex {

/// Runs an operation and returns its result; an exception becomes a result: a thrown
/// QVERRORCODE_TAG itself, anything else QVERR_CREATE_FAILED, since what the library's own code
/// throws is std::bad_alloc.
template <class Operation>
QVERRORCODE_TAG NoThrow(const Operation& operation) noexcept try {
  return operation();
} catch (QVERRORCODE_TAG code) {
  // Thrown, success is none.
  return code != QVERR_OK ? code : QVERR_CREATE_FAILED;
} catch (...) {
  return QVERR_CREATE_FAILED;
}

/// The same for an operation that returns a value: an exception becomes `fallback`.
template <class Operation, class Value>
Value NoThrowOr(Value fallback, const Operation& operation) noexcept try {
  return operation();
} catch (...) {
  return fallback;
}

}  // namespace Quorvex
