// Files that other programs wrote, as the library delivers them.
#pragma once

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"

namespace tests {

struct ForeignFileCase {
  const char* name;  // of the fixture, without its extension
  int channels;
  const wchar_t* encoding;

  std::string Path(const char* extension) const { return Fixture(std::string(name) + extension); }
};

inline void PrintTo(const ForeignFileCase& c, std::ostream* stream) { *stream << c.name; }

/// Opens the fixture and expects its facts, at 8,000 Hz, and its samples, the channels kept apart.
inline void ExpectForeignFile(const ForeignFileCase& c, const char* extension,
                              const wchar_t* format, const std::vector<short>& samples) {
  using namespace Quorvex;
  MediaFilePtr file;
  ASSERT_EQ(MediaFileOpen(c.Path(extension).c_str(), file), QVERR_OK);
  EXPECT_EQ(WideDescription(*file), format);
  wchar_t encoding[64];
  file->GetFormatDescription(encoding, 64);
  EXPECT_STREQ(encoding, c.encoding);
  EXPECT_EQ(file->GetSamplingFrequency(), 8000U);
  ASSERT_EQ(file->GetTrackChannelCount(), c.channels);
  EXPECT_EQ(file->GetMilliseconds(), samples.size() / static_cast<unsigned>(c.channels) / 8);
  ASSERT_EQ(file->SelectChannels(nullptr, 0, kChannelModeSeparate), QVERR_OK);
  EXPECT_EQ(PullAll(*file), samples);
}

}  // namespace tests
