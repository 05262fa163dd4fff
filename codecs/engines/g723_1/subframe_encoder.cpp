// Everything is compared behind the synthesis and the weightings, which leave more error where the
// voice is loud. The target is what the excitation has to make there, after what the excitation
// before still makes.
#include "codecs/engines/g723_1/subframe_encoder.h"

#include <algorithm>

#include "codecs/engines/g723_1/closed_loop_pitch.h"
#include "codecs/engines/g723_1/convolution.h"
#include "codecs/engines/g723_1/excitation.h"
#include "codecs/engines/g723_1/multipulse_search.h"
#include "codecs/engines/sums_of_products.h"

namespace Quorvex::g723_1 {

using namespace fixed_point;

namespace {

void RemoveSaturating(const Subframe& vector, const Subframe& response, Subframe& target) noexcept {
  for (std::size_t n = 0; n < kSubframeSamples; ++n) {
    Long sum = Deposit(target[n]) >> 1;
    for (std::size_t j = 0; j <= n; ++j) sum = MultiplySubtract(sum, vector[j], response[n - j]);
    target[n] = Round(LongShiftLeft(sum, 1));
  }
}

// Takes from the target what the pitch makes of it.
void RemovePitch(const Subframe& vector, const Subframe& response, Subframe& target) noexcept {
  // The target takes 2^29 of the 2^30 that undoubled sums have, and rounding a little of the rest.
  constexpr Long kLimit = kSumLimit / 2 - 0x2000;
  if (!ProductsStayBelow(kLimit, vector.data(), response) ||
      Peak(vector.data(), vector.size()) > kMostWord) {
    RemoveSaturating(vector, response, target);
    return;
  }
  Subframe negative;
  std::ranges::transform(vector, negative.begin(), Negate);
  const Subframe filtered = Convolve(negative.data(), response, 14);
  std::ranges::transform(target, filtered, target.begin(), Add);
}

}  // namespace

void SubframeEncoder::Encode(std::size_t subframe, const Input& input, SearchBudget& budget,
                             FrameIndices& indices, Word* excitation) noexcept {
  const Subframe response = ResponseOf(input.filters);
  Subframe target = input.target;
  synthesis_.RemoveRinging(input.filters, target);

  int& halfLag = indices.halfLags[subframe / 2];
  SubframeIndices& coded = indices.subframes[subframe];
  const CodedPitch pitch = SearchPitch({indices.type, subframe, halfLag, input.isSine}, taming_,
                                       target, response, excitation);
  coded.pitchRow = pitch.row;
  if (subframe % 2 == 0) {
    halfLag = pitch.lag;
  } else {
    indices.lagDeltas[subframe] = static_cast<unsigned>(pitch.lag - (halfLag - 1));
  }

  const Subframe adaptive = AdaptiveVector(subframe, indices, excitation);
  RemovePitch(adaptive, response, target);
  if (indices.type == FrameType::kAtHighRate) {
    SearchMultipulse(subframe, halfLag, target, response, coded);
  } else {
    SearchAlgebraic(pitch.lag, target, response, budget, coded);
  }
  MakeExcitation(subframe, indices, adaptive, excitation);
  Follow(input.filters, pitch.lag, HasShortLagGains(indices.type, halfLag), pitch.row, excitation);
}

void SubframeEncoder::Follow(const SubframeFilters& filters, int lag, bool hasShortLagGains,
                             unsigned pitchRow, const Word* excitation) noexcept {
  taming_.Update(lag, hasShortLagGains, pitchRow);
  synthesis_.Update(filters, excitation);
}

}  // namespace Quorvex::g723_1
