// Whether the licensed speech codecs may be used: the one place that decides.
#pragma once

#include <mutex>

#include <MediaAccessor/library.h>

namespace Quorvex {

enum class LicensedFeature { kG729, kTrueSpeech };

/// The host's word, and the decision that follows from it, as library.h describes it. Any thread.
class LicencePolicy {
 public:
  /// The library's.
  static LicencePolicy& Instance() noexcept;

  /// Takes a licensee's name and key, each either empty or not: nothing else is looked at.
  void SetTexts(bool hasLicensee, bool hasKey) noexcept;
  void SetCallbacks(MediaAccessorLicenceQuery query, MediaAccessorLicenceCheck check) noexcept;

  /// Asks the host's callbacks, if there are any, outside the lock.
  bool IsPermitted(LicensedFeature feature) const noexcept;

 private:
  mutable std::mutex mutex_;  // guards what follows
  bool textsPermit_ = true;
  MediaAccessorLicenceQuery query_ = nullptr;
  MediaAccessorLicenceCheck check_ = nullptr;
};

}  // namespace Quorvex
