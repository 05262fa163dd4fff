// Which codec needs which licence.
#include <MediaAccessor/ipp_coder.h>

#include "support/licence_policy.h"

namespace Quorvex {

bool IPPCoder::IsLicensedCodec(CODEC codec) noexcept {
  const LicencePolicy& policy = LicencePolicy::Instance();
  switch (codec) {
    case G729A:
    case G729A_HEADERED:
      return policy.IsPermitted(LicensedFeature::kG729);
    case G723_1_53:
    case G723_1_63:
      return policy.IsPermitted(LicensedFeature::kTrueSpeech);
    case G722:
    case G722_1:
      return true;
  }
  return false;
}

}  // namespace Quorvex
