// The licence decision.
#include "support/licence_policy.h"

#include <new>

#include "support/no_throw.h"

namespace Quorvex {
namespace {

const char* NameOf(LicensedFeature feature) noexcept {
  return feature == LicensedFeature::kG729 ? "G729" : "TrueSpeech";
}

}  // namespace

LicencePolicy& LicencePolicy::Instance() noexcept {
  // Never destroyed, like the registry, and not on the heap, which may have no memory.
  alignas(LicencePolicy) static unsigned char memory[sizeof(LicencePolicy)];
  static auto& policy = *new (memory) LicencePolicy;
  return policy;
}

void LicencePolicy::SetTexts(bool hasLicensee, bool hasKey) noexcept {
  const std::lock_guard guard(mutex_);
  textsPermit_ = hasLicensee == hasKey;
}

void LicencePolicy::SetCallbacks(MediaAccessorLicenceQuery query,
                                 MediaAccessorLicenceCheck check) noexcept {
  const std::lock_guard guard(mutex_);
  query_ = query;
  check_ = check;
}

bool LicencePolicy::IsPermitted(LicensedFeature feature) const noexcept {
  MediaAccessorLicenceQuery query = nullptr;
  MediaAccessorLicenceCheck check = nullptr;
  {
    const std::lock_guard guard(mutex_);
    if (!textsPermit_) return false;
    query = query_;
    check = check_;
  }
  const char* const name = NameOf(feature);
  return NoThrowOr(false, [&] {
    unsigned long count = 1;
    if (query != nullptr && (query(name, count) != QVERR_OK || count == 0)) return false;
    return check == nullptr || check(name) == QVERR_OK;
  });
}

}  // namespace Quorvex
