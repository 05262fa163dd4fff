// The speech encoder over a small engine: its gathering of frames, and its conversion from any
// sampling frequency.
//
//     codec8 { step8 rate32 length16 samples }     rate: with kSetRate only
#include <MediaAccessor/ownership.h>

#include "codecs/speech_coder.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/fuzz_sink.h"
#include "tests/codecs/fake_engine.h"

namespace {

using namespace Quorvex;
using fuzz::Require;

enum Step : unsigned { kRefuse = 1, kReset = 2, kSetRate = 4, kEnd = 8 };

// The filter's design takes a while, and so do the many samples that come of a low frequency.
constexpr int kMostRates = 4;
constexpr int kLowRate = 1000;
constexpr std::size_t kMostLow = 200;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto codec = static_cast<IPPCoder::CODEC>(input.Take<std::uint8_t>() % 4 + 1);
  const IPPEncoderPtr encoder(MakeEncoder(codec, tests::FakeEngineOf(codec)));
  Require(encoder != nullptr);
  fuzz::FrameSink<unsigned char> sink;
  sink.frame = static_cast<unsigned long>(encoder->GetCompressedFrameBytes());
  encoder->SetSink(&sink);
  const std::size_t frame = codec <= IPPCoder::G729A_HEADERED ? 80 : 240;
  std::size_t begun = 0;  // samples of a frame
  bool isKnown = true;    // how many; not after a conversion
  int rates = 0;
  bool isConverted = false;
  QVERRORCODE_TAG setUp = QVERR_OK;
  while (!input.Rest().empty()) {
    const unsigned step = input.Take<std::uint8_t>();
    if ((step & kSetRate) != 0 && rates++ < kMostRates) {
      const auto rate = input.Take<std::int32_t>();
      const int returned = encoder->SetInputSampleRate(rate);
      isConverted = rate != 0 && rate != encoder->GetCodecSampleRate();
      setUp = isConverted ? static_cast<QVERRORCODE_TAG>(returned) : QVERR_OK;
      Require(isConverted ? setUp == QVERR_OK || setUp == QVERR_BAD_STATE : returned == rate);
    }
    if ((step & kReset) != 0) {
      Require(encoder->Reset());
      begun = 0;
      isKnown = true;
    }
    sink.refuses = (step & kRefuse) != 0;
    sink.frames = 0;
    const int rate = encoder->GetInputSampleRate();
    const std::size_t most = rate > 0 && rate < kLowRate ? kMostLow : 0xFFFF;
    const fuzz::Bytes bytes =
        input.TakeBytes(std::min<std::size_t>(input.Take<std::uint16_t>(), most) * sizeof(short));
    const std::size_t count = (step & kEnd) != 0 ? 0 : bytes.size() / sizeof(short);
    const QVERRORCODE_TAG result = encoder->Write(bytes.data(), static_cast<unsigned long>(count));
    Require(setUp == QVERR_OK ? result == QVERR_OK || (result == QVERR_FILE_IO && sink.refuses)
                              : result == setUp);
    isKnown = isKnown && !isConverted;
    if (isKnown) {
      Require(sink.frames == (count == 0 ? (begun + frame - 1) / frame : (begun + count) / frame));
      begun = count == 0 ? 0 : (begun + count) % frame;
    }
    tests::engineRecord.encoded.clear();
  }
  return 0;
}
