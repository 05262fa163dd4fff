// A conversion that no driver does in one step.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "compression/posix/compression_driver.h"
#include "formats/wav/wav_conversion.h"

namespace {

using namespace Quorvex;

constexpr std::uint16_t kTag = 0x7701;
constexpr std::uint16_t kSilentTag = 0x7702;  // its first stage cannot be opened

// Doubles each byte: from mono to 8-bit PCM of two channels, which is not what a reader wants.
class Doubling final : public Converter {
 public:
  std::size_t OutputBytes(std::size_t sourceBytes) const noexcept override {
    return 2 * sourceBytes;
  }
  bool Convert(std::span<const unsigned char> source, ConvertExtent,
               std::span<unsigned char> output, std::size_t& used,
               std::size_t& produced) noexcept override {
    used = source.size();
    produced = 2 * used;
    for (std::size_t i = 0; i < produced; ++i) output[i] = source[i / 2];
    return !std::equal(source.begin(), source.end(), "bad", std::end("bad") - 1);
  }
};

class DoublingDriver final : public CompressionDriver {
 public:
  Suggestion Suggest(const WaveFormat& source, WaveFormat& target, unsigned fields) const override {
    if (source.tag != kTag && source.tag != kSilentTag) return Suggestion::kNotPossible;
    suggestedFields.push_back(fields);
    const WaveFormat offered{.tag = kWaveTagPCM,
                             .channels = 2,
                             .samplesPerSecond = source.samplesPerSecond,
                             .averageBytesPerSecond = 2 * source.samplesPerSecond,
                             .blockAlign = 2,
                             .bitsPerSample = 8,
                             .extra = {}};
    return CompleteSuggestion(offered, target, fields) ? Suggestion::kMade
                                                       : Suggestion::kNotPossible;
  }
  std::unique_ptr<Converter> Open(const WaveFormat& source, const WaveFormat&) const override {
    if (source.tag != kTag) return nullptr;
    return std::make_unique<Doubling>();
  }

  mutable std::vector<unsigned> suggestedFields;
};

DoublingDriver& Driver() {
  static DoublingDriver& driver = []() -> DoublingDriver& {
    static DoublingDriver added;
    AddCompressionDriver(added);
    return added;
  }();
  driver.suggestedFields.clear();
  return driver;
}

TEST(TwoStages, GoThroughAnyPCM) {
  const DoublingDriver& driver = Driver();
  const WaveFormat format{.tag = kTag, .channels = 2, .samplesPerSecond = 8000, .extra = {}};
  std::vector<unsigned char> source = {128, 129, 0, 255};
  WAVConversion conversion;
  ASSERT_EQ(conversion.Open(format, source), QVERR_OK);
  EXPECT_EQ(driver.suggestedFields, (std::vector<unsigned>{0xB0000, 0x10000}));
  EXPECT_EQ(conversion.Target().channels, 2);
  EXPECT_EQ(conversion.Target().samplesPerSecond, 8000U);
  std::size_t used = 0;
  std::size_t produced = 0;
  ASSERT_EQ(conversion.Convert(4, ConvertExtent::kWholeBlocks, used, produced), QVERR_OK);
  EXPECT_EQ(used, 4U);
  const short expected[] = {0, 0, 256, 256, -32768, -32768, 32512, 32512};
  ASSERT_EQ(produced, sizeof expected);
  EXPECT_TRUE(std::equal(std::begin(expected), std::end(expected), conversion.Samples()));
  std::copy_n("bad", 3, source.begin());
  EXPECT_EQ(conversion.Convert(3, ConvertExtent::kWholeBlocks, used, produced), QVERR_BAD_FORMAT);
}

TEST(TwoStages, AStageThatIsMissing) {
  Driver();
  std::vector<unsigned char> source(4);
  WAVConversion conversion;
  WaveFormat format{.tag = kSilentTag, .channels = 2, .samplesPerSecond = 8000, .extra = {}};
  EXPECT_EQ(conversion.Open(format, source), QVERR_BAD_FORMAT);
  EXPECT_FALSE(conversion.IsOpen());
  format.tag = 0x7703;
  EXPECT_EQ(conversion.Open(format, source), QVERR_BAD_FORMAT);
}

}  // namespace
