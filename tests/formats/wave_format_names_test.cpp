// Names of wave format tags, against the public registry.
#include "formats/wav/wave_format_names.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using Quorvex::WaveFormatName;

TEST(WaveFormatNames, AsRegistered) {
  struct Case {
    std::uint32_t tag;
    std::wstring_view name;
  };
  const Case cases[] = {
      {0, L"Unknown format"},
      {1, L"WAVE_FORMAT_PCM - Uncompressed Audio"},
      {2, L"WAVE_FORMAT_ADPCM - Microsoft Corporation"},
      {3, L"WAVE_FORMAT_IEEE_FLOAT - Microsoft Corporation"},
      {6, L"WAVE_FORMAT_ALAW - Microsoft Corporation"},
      {7, L"WAVE_FORMAT_MULAW - Microsoft Corporation"},
      {0xF, L"Unknown format"},
      {0x10, L"WAVE_FORMAT_OKI_ADPCM - OKI"},
      {0x11, L"WAVE_FORMAT_DVI_ADPCM - Intel Corporation"},
      {0x1004, L"WAVE_FORMAT_OLIOPR - Ing C. Olivetti & C., S.p.A."},
      {0x1100, L"WAVE_FORMAT_LH_CODEC - Lernout & Hauspie"},
      {0x1400, L"WAVE_FORMAT_NORRIS - Norris Communications, Inc."},
      {0x1500, L"WAVE_FORMAT_SOUNDSPACE_MUSICOMPRESS - AT&T Labs, Inc."},
      {0x2000, L"WAVE_FORMAT_DVM - FAST Multimedia AG"},
      {0xFFFF, L"Unknown format"},
      {0x10001, L"Unknown format"},  // no tag: they have 16 bits
  };
  for (const Case& c : cases) EXPECT_EQ(WaveFormatName(c.tag), c.name) << c.tag;
}

TEST(WaveFormatNames, SoManyTags) {
  int known = 0;
  for (std::uint32_t tag = 0; tag <= 0xFFFF; ++tag) {
    if (WaveFormatName(tag) != L"Unknown format") ++known;
  }
  EXPECT_EQ(known, 132);
}

}  // namespace
