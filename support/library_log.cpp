// The exported face of the library's log.
#include <MediaAccessor/log.h>

#include "support/ft_log.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr unsigned long kKnownFlags = kLogDebugger | kLogStandardOutput | kLogStandardError |
                                      kLogCloseAfterWrite | kLogTimeStamp | kLogThreadTag;

template <class Character>
QVERRORCODE_TAG SetLog(const Character* fileName, unsigned long bits) noexcept {
  if ((bits & ~kKnownFlags) != 0) return QVERR_INVALID_ARGUMENT;
  return NoThrow([&] {
    LogFlags flags;
    flags.debugger = (bits & kLogDebugger) != 0;
    flags.standardOutput = (bits & kLogStandardOutput) != 0;
    flags.standardError = (bits & kLogStandardError) != 0;
    flags.appendLineEnd = true;
    flags.closeAfterWrite = (bits & kLogCloseAfterWrite) != 0;
    flags.timeStamp = (bits & kLogTimeStamp) != 0;
    flags.threadTag = (bits & kLogThreadTag) != 0;
    LibraryLog().SetDestinations(ToWide(fileName), flags);
    return QVERR_OK;
  });
}

}  // namespace

QVERRORCODE_TAG MediaAccessorSetLog(const wchar_t* fileName, unsigned long flags) noexcept {
  return SetLog(fileName, flags);
}

QVERRORCODE_TAG MediaAccessorSetLog(const char* fileName, unsigned long flags) noexcept {
  return SetLog(fileName, flags);
}

}  // namespace Quorvex
