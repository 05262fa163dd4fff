// An accessor of an application's own: it wraps another one and makes it louder or quieter.
//     gain_accessor FILE FACTOR     prints the loudest sample of the file after the gain
#include <MediaAccessor/all.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace Quorvex;

class GainAccessor : public CMediaAccessorDecorator {
 public:
  explicit GainAccessor(double factor) : factor_(factor) {}

  // AttachSource refuses a null or a flagged source. What depends on the source's format would be
  // rebuilt here.
  QVERRORCODE_TAG SetSource(CMediaAccessor* source) override { return AttachSource(source); }

  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                            void* context = nullptr) override {
    samples = nullptr;
    frames = 0;
    if (GetSource() == nullptr) return QVERR_NO_SOURCE;
    const short* block = nullptr;
    unsigned long count = 0;
    const QVERRORCODE_TAG result = GetSource()->ReadBlock(block, count, context);
    if (result != QVERR_OK || count == 0) return result;
    output_.assign(block, block + count * GetChannelCount());
    for (short& sample : output_) {
      const double value = std::clamp(sample * factor_, -32768.0, 32767.0);
      sample = static_cast<short>(std::lround(value));
    }
    samples = output_.data();
    frames = count;
    return QVERR_OK;
  }

  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    std::wstring text = L"Gain, source: ";
    if (const CMediaAccessor* source = GetSource()) {
      text += TextOf<wchar_t>([source](wchar_t* description, unsigned long size) {
        return source->GetDescription(description, size);
      });
    }
    if (buffer != nullptr && capacity > 0) {
      const std::size_t length = text.copy(buffer, capacity - 1);
      buffer[length] = L'\0';
      return static_cast<unsigned long>(length) + 1;
    }
    return static_cast<unsigned long>(text.size()) + 1;
  }

 private:
  double factor_;
  std::vector<short> output_;  // the block that was handed out last
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  MediaFilePtr file;
  const QVERRORCODE_TAG opened = MediaFileOpen(argv[1], file);
  if (opened != QVERR_OK) {
    std::fprintf(stderr, "%s: %s\n", argv[1], MediaAccessorGetResultMeaning(opened));
    return 1;
  }
  GainAccessor gain(std::atof(argv[2]));
  gain.SetSource(file.get());
  int loudest = 0;
  const short* samples = nullptr;
  unsigned long frames = 0;
  while (gain.ReadBlock(samples, frames) == QVERR_OK && frames > 0) {
    for (unsigned long i = 0; i < frames; ++i) loudest = std::max(loudest, std::abs(samples[i]));
  }
  std::printf("%d\n", loudest);
}
