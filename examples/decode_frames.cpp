// The frames of a speech codec, as they come from a telephone line, into PCM.
//     decode_frames FILE.g722     prints how many samples there are, and the loudest
#include <MediaAccessor/all.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using namespace Quorvex;

// A decoder pushes its PCM; whoever wants it is a sink.
class Loudest : public CMediaSink {
 public:
  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  // A speech decoder counts in samples, other sources of sinks differ: see their headers.
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    const auto* const pcm = static_cast<const short*>(data);
    for (unsigned long i = 0; i < count; ++i) level = std::max(level, std::abs(pcm[i]));
    samples += count;
    return QVERR_OK;
  }

  int level = 0;
  unsigned long long samples = 0;
};

}  // namespace

int main(int argc, char** argv) {
  std::FILE* const file = argc < 2 ? nullptr : std::fopen(argv[1], "rb");
  // Null where the library does not have the codec, or not at the bit rate.
  const IPPDecoderPtr decoder(IPPDecoder::CreateInstance(IPPCoder::G722, 64000));
  if (file == nullptr || decoder == nullptr) return 1;
  Loudest loudest;
  decoder->SetSink(&loudest);
  // Whole frames at a time: a part of one is filled up with zeros, which is right at the end only.
  std::vector<unsigned char> block(static_cast<unsigned>(decoder->GetCompressedFrameBytes()) * 10);
  QVERRORCODE_TAG result = QVERR_OK;
  while (result == QVERR_OK) {
    const std::size_t bytes = std::fread(block.data(), 1, block.size(), file);
    if (bytes == 0) break;
    result = decoder->Decode(block.data(), static_cast<unsigned>(bytes));
  }
  std::fclose(file);
  if (result != QVERR_OK) std::fprintf(stderr, "%s\n", MediaAccessorGetResultMeaning(result));
  std::printf("%llu samples, the loudest %d\n", loudest.samples, loudest.level);
  return result == QVERR_OK ? 0 : 1;
}
