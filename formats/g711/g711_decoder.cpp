// The G.711 decoder: bytes in, 16-bit samples on to the target.
#include <MediaAccessor/g711_decoder.h>

#include <cstddef>
#include <limits>

#include "support/allocator.h"
#include "support/g711.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

class CG711DecoderImpl final : public CG711Decoder, public AllocatedObject {
 public:
  CG711DecoderImpl() : heap_(CurrentAllocator()) {}
  ~CG711DecoderImpl() override { heap_.Free(output_); }

  QVERRORCODE_TAG SetChannelCount(int channels) override {
    channels_ = channels;
    return QVERR_OK;
  }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override;
  QVERRORCODE_TAG SetLaw(int selector) override;
  void SetTarget(CMediaSink* target) override { target_ = target; }

 private:
  bool MakeRoom(std::size_t samples);

  WaveLaw law_ = WaveLaw::kLinear;  // linear: not chosen yet
  Allocator& heap_;
  short* output_ = nullptr;   // owned, from heap_
  std::size_t capacity_ = 0;  // of output_, in bytes
  int channels_ = 0;          // 0: not set yet
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

// The buffer holds exactly the largest block so far.
bool CG711DecoderImpl::MakeRoom(std::size_t samples) {
  if (samples > std::numeric_limits<std::size_t>::max() / sizeof(short)) return false;
  const std::size_t bytes = samples * sizeof(short);
  if (bytes <= capacity_) return true;
  heap_.Free(output_);
  output_ = static_cast<short*>(heap_.Allocate(bytes));
  capacity_ = output_ != nullptr ? bytes : 0;
  return output_ != nullptr;
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
  if (!MakeRoom(samples)) return QVERR_CREATE_FAILED;
  ExpandG711(law_, static_cast<const unsigned char*>(data), samples, output_);
  return NoThrow([&] { return target_->Write(output_, count * 2); });
}

}  // namespace

CG711Decoder::~CG711Decoder() = default;

CG711Decoder* CG711Decoder::CreateInstance() noexcept { return new CG711DecoderImpl; }

}  // namespace Quorvex
