// The speech decoder: any codec, there or not, over its engine or a small one that refuses frames,
// with calls of any length to a sink that refuses now and then.
//
//     codec8 rate32 flags8 { step8 length16 data }
#include <MediaAccessor/ownership.h>

#include "codecs/speech_coder.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_sink.h"
#include "tests/codecs/fake_engine.h"

namespace {

using namespace Quorvex;
using fuzz::Require;

enum Flag : unsigned { kFakeEngine = 1, kKeepTail = 2, kErasureMarker = 4, kKnownRate = 8 };
enum Step : unsigned { kRefuse = 1, kReset = 2 };

IPPDecoder* MakeOne(fuzz::Input& input, unsigned& flags) {
  constexpr long kRates[] = {64000, 56000, 48000, 32000, 24000};
  const auto codec = static_cast<IPPCoder::CODEC>(input.Take<std::uint8_t>() % 8);
  const auto rate = input.Take<std::uint32_t>();
  flags = input.Take<std::uint8_t>();
  const long bitRate = (flags & kKnownRate) != 0 ? kRates[rate % std::size(kRates)] : rate;
  return (flags & kFakeEngine) != 0 ? MakeDecoder(codec, bitRate, tests::FakeEngineOf(codec))
                                    : IPPDecoder::CreateInstance(codec, bitRate);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  unsigned flags = 0;
  const IPPDecoderPtr decoder(MakeOne(input, flags));
  if (decoder == nullptr) return 0;
  const auto frame = static_cast<std::uint32_t>(decoder->GetCompressedFrameBytes());
  fuzz::FrameSink<short> sink;
  sink.frame = static_cast<unsigned long>(decoder->SamplesForBytes(frame));
  decoder->SetSink(&sink);
  decoder->SetKeepTail((flags & kKeepTail) != 0);
  if ((flags & kErasureMarker) != 0) decoder->EnableErasureMarker();
  bool mayKeep = false;  // something from an earlier call
  while (!input.Rest().empty()) {
    const unsigned step = input.Take<std::uint8_t>();
    if ((step & kReset) != 0) {
      Require(decoder->Reset());
      mayKeep = false;
    }
    sink.refuses = (step & kRefuse) != 0;
    sink.frames = 0;
    const fuzz::Bytes block = input.TakeBytes(input.Take<std::uint16_t>());
    const auto bytes = static_cast<std::uint32_t>(block.size());
    const QVERRORCODE_TAG result = decoder->Decode(block.data(), bytes);
    const std::uint64_t whole = bytes / frame;
    const std::uint64_t all = (bytes + std::uint64_t{frame} - 1) / frame;
    Require(sink.frames <= all + (mayKeep ? 1 : 0));
    if (result == QVERR_OK) {
      Require(sink.frames >= (mayKeep ? whole : all));
    } else {
      Require(result == QVERR_BAD_FORMAT || (result == QVERR_FILE_IO && sink.refuses));
      mayKeep = mayKeep || (flags & kKeepTail) != 0;
    }
    tests::engineRecord.decoded.clear();
  }
  return 0;
}
