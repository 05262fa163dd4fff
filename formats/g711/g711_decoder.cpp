// The G.711 decoder: bytes in, 16-bit samples on to the target.
#include <MediaAccessor/g711_decoder.h>

#include <cstddef>
#include <limits>

#include "support/allocator.h"
#include "support/cft_array.h"
#include "support/g711.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

class CG711DecoderImpl final : public CG711Decoder, public AllocatedObject {
 public:
  // The buffer holds exactly the largest block so far.
  CG711DecoderImpl() { output_.SetGrowth(1, 1, false, false); }

  QVERRORCODE_TAG SetChannelCount(int channels) override {
    channels_ = channels;
    return QVERR_OK;
  }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override;
  QVERRORCODE_TAG SetLaw(int selector) override;
  void SetTarget(CMediaSink* target) override { target_ = target; }

 private:
  WaveLaw law_ = WaveLaw::kLinear;  // linear: not chosen yet
  CFTarray<short> output_;
  int channels_ = 0;  // 0: not set yet
  CMediaSink* target_ = nullptr;
};

QVERRORCODE_TAG CG711DecoderImpl::SetLaw(int selector) {
  switch (selector) {
    case kSelectALaw:
      law_ = WaveLaw::kALaw;
      return QVERR_OK;
    case kSelectMuLaw:
      law_ = WaveLaw::kMuLaw;
      return QVERR_OK;
    default:
      return QVERR_INVALID_ARGUMENT;
  }
}

QVERRORCODE_TAG CG711DecoderImpl::Write(const void* data, unsigned long count) {
  if (target_ == nullptr || law_ == WaveLaw::kLinear || channels_ < 1)
    return QVERR_INVALID_ARGUMENT;
  if (data == nullptr && count > 0) return QVERR_INVALID_ARGUMENT;
  const auto channels = static_cast<std::size_t>(channels_);
  // The length that the target is told is count x 2.
  if (count > std::numeric_limits<unsigned long>::max() / 2) return QVERR_INVALID_ARGUMENT;
  if (count > std::numeric_limits<std::size_t>::max() / channels) return QVERR_CREATE_FAILED;
  const std::size_t samples = count * channels;
  // A buffer that is too small goes before the larger one comes; nothing in it is kept.
  if (samples > output_.Capacity()) output_.Reset();
  if (!output_.Resize(samples)) return QVERR_CREATE_FAILED;
  ExpandG711(law_, static_cast<const unsigned char*>(data), samples, output_.Data());
  return NoThrow([&] { return target_->Write(output_.Data(), count * 2); });
}

}  // namespace

CG711Decoder::~CG711Decoder() = default;

CG711Decoder* CG711Decoder::CreateInstance() noexcept { return new CG711DecoderImpl; }

}  // namespace Quorvex
