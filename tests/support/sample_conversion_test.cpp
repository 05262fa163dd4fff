// G.711 expansion and sample widths.
#include "support/sample_conversion.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/g711.h"

namespace {

using namespace Quorvex;

TEST(G711, VectorEqualsTable) {
  std::vector<unsigned char> codes;
  for (int i = 0; i < 3 * 256 + 5; ++i) codes.push_back(static_cast<unsigned char>(i * 7));
  for (const WaveLaw law : {WaveLaw::kALaw, WaveLaw::kMuLaw}) {
    const G711Table& table = law == WaveLaw::kALaw ? kG711ALaw : kG711MuLaw;
    std::vector<short> expected;
    for (const unsigned char code : codes) expected.push_back(table[code]);
    std::vector<short> samples(codes.size());
    ExpandG711(law, codes.data(), codes.size(), samples.data());
    EXPECT_EQ(samples, expected);
  }
}

TEST(SampleConversion, AnUnknownWidthGivesSilenceAndBadFormat) {
  const unsigned char input[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  for (const int width : {0, 3, 5, -1}) {
    std::vector<short> samples(2, 7);
    EXPECT_EQ(ConvertToInt16(WaveLaw::kLinear, width, input, 2, samples.data()), QVERR_BAD_FORMAT);
    EXPECT_EQ(samples, (std::vector<short>{0, 0}));
  }
  std::vector<short> samples(2);
  EXPECT_EQ(ConvertToInt16(WaveLaw::kLinear, 1, input, 2, samples.data()), QVERR_OK);
  EXPECT_EQ(samples, (std::vector<short>{-127 * 256, -126 * 256}));
}

}  // namespace
