// The order of the virtual operations is binary interface. A pointer to a virtual member function
// holds its offset in the virtual table (Itanium C++ ABI, 2.3), so no object is needed to look at
// it.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace Quorvex;

template <class Function>
std::size_t EntryOf(Function function) {
  std::ptrdiff_t words[2];
  static_assert(sizeof function == sizeof words);
  std::memcpy(words, &function, sizeof words);
  return static_cast<std::size_t>(words[0] - 1) / sizeof(void*);
}

// The slot in a table that begins with a destructor, which has two entries where one slot is
// counted.
template <class Function>
std::size_t Slot(Function function) {
  return EntryOf(function) - 1;
}

// Shows protected operations.
struct FileProbe : CMediaFile {
  using CMediaFile::GetDefaultChannelMode;
  using CMediaFile::OpenFormat;
  using CMediaFile::ReadRawBlock;
};

using WideText = unsigned long (CMediaAccessor::*)(wchar_t*, unsigned long) const;
using NarrowText = unsigned long (CMediaAccessor::*)(char*, unsigned long) const;
using WideFileText = unsigned long (CMediaFile::*)(wchar_t*, unsigned long) const;
using NarrowFileText = unsigned long (CMediaFile::*)(char*, unsigned long) const;

TEST(SlotOrder, MediaAccessor) {
  EXPECT_EQ(Slot(&CMediaAccessor::GetSamplingFrequency), 1U);
  EXPECT_EQ(Slot(&CMediaAccessor::GetChannelCount), 2U);
  EXPECT_EQ(Slot(&CMediaAccessor::IsFlagged), 3U);
  EXPECT_EQ(Slot(&CMediaAccessor::ReadBlock), 4U);
  EXPECT_EQ(Slot(static_cast<WideText>(&CMediaAccessor::GetDescription)), 5U);
  EXPECT_EQ(Slot(static_cast<NarrowText>(&CMediaAccessor::GetDescription)), 6U);
  EXPECT_EQ(Slot(static_cast<NarrowText>(&CMediaAccessor::GetTypeDescription)), 7U);
  EXPECT_EQ(Slot(static_cast<WideText>(&CMediaAccessor::GetTypeDescription)), 8U);
  EXPECT_EQ(Slot(&CMediaAccessor::Release), 9U);
  EXPECT_EQ(Slot(&CMediaAccessorDecorator::SetSource), 10U);
  EXPECT_EQ(Slot(&CMediaAccessorDecorator::GetSource), 11U);
  EXPECT_EQ(Slot(&ResamplingMediaAccessor::SetOutputSamplingFrequency), 12U);
}

TEST(SlotOrder, SinksAndWriters) {
  EXPECT_EQ(Slot(&CMediaSink::SetChannelCount), 1U);
  EXPECT_EQ(Slot(&CMediaSink::Write), 2U);
  EXPECT_EQ(Slot(&CMediaSink::Release), 3U);
  EXPECT_EQ(Slot(&MediaAccessorMixer::SetTarget), 4U);
  EXPECT_EQ(Slot(&CG711Decoder::SetLaw), 4U);
  EXPECT_EQ(Slot(&CG711Decoder::SetTarget), 5U);
  using Narrow = QVERRORCODE_TAG (CMediaFileWriter::*)(CMediaAccessor*, const char*, bool);
  using Wide = QVERRORCODE_TAG (CMediaFileWriter::*)(CMediaAccessor*, const wchar_t*, bool);
  EXPECT_EQ(Slot(static_cast<Narrow>(&CMediaFileWriter::WriteFile)), 4U);
  EXPECT_EQ(Slot(static_cast<Wide>(&CMediaFileWriter::WriteFile)), 5U);
}

TEST(SlotOrder, SpeechCoders) {
  EXPECT_EQ(Slot(&IPPDecoder::CheckChannelCount), 1U);
  EXPECT_EQ(Slot(&IPPDecoder::Decode), 2U);
  EXPECT_EQ(Slot(&IPPDecoder::Release), 3U);
  EXPECT_EQ(Slot(&IPPDecoder::SetOutput), 4U);
  EXPECT_EQ(Slot(&IPPDecoder::GetSampleRate), 5U);
  EXPECT_EQ(Slot(&IPPDecoder::GetCompressedFrameBytes), 6U);
  EXPECT_EQ(Slot(&IPPDecoder::GetCodec), 7U);
  EXPECT_EQ(Slot(&IPPDecoder::Reset), 8U);
  EXPECT_EQ(Slot(&IPPDecoder::SetSink), 9U);
  EXPECT_EQ(Slot(&IPPDecoder::SetKeepTail), 10U);
  EXPECT_EQ(Slot(&IPPDecoder::GetCodecSampleRate), 11U);
  EXPECT_EQ(Slot(&IPPDecoder::SamplesForBytes), 12U);
  EXPECT_EQ(Slot(&IPPDecoder::EnableErasureMarker), 13U);
  EXPECT_EQ(Slot(&IPPEncoder::SetSink), 4U);
  EXPECT_EQ(Slot(&IPPEncoder::GetCodecSampleRate), 5U);
  EXPECT_EQ(Slot(&IPPEncoder::GetCompressedFrameBytes), 6U);
  EXPECT_EQ(Slot(&IPPEncoder::GetCodec), 7U);
  EXPECT_EQ(Slot(&IPPEncoder::Reset), 8U);
  EXPECT_EQ(Slot(&IPPEncoder::SetInputSampleRate), 9U);
  EXPECT_EQ(Slot(&IPPEncoder::GetInputSampleRate), 10U);
}

TEST(SlotOrder, MediaFileFactory) {
  using WideDescription = unsigned long (CMediaFileFactory::*)(wchar_t*, unsigned long) const;
  using NarrowDescription = unsigned long (CMediaFileFactory::*)(char*, unsigned long) const;
  using WideExtension =
      unsigned long (CMediaFileFactory::*)(unsigned long, wchar_t*, unsigned long) const;
  using NarrowExtension =
      unsigned long (CMediaFileFactory::*)(unsigned long, char*, unsigned long) const;
  EXPECT_EQ(Slot(static_cast<WideDescription>(&CMediaFileFactory::GetDescription)), 1U);
  EXPECT_EQ(Slot(static_cast<NarrowDescription>(&CMediaFileFactory::GetDescription)), 2U);
  EXPECT_EQ(Slot(&CMediaFileFactory::GetExtensionCount), 3U);
  EXPECT_EQ(Slot(static_cast<WideExtension>(&CMediaFileFactory::GetExtension)), 4U);
  EXPECT_EQ(Slot(static_cast<NarrowExtension>(&CMediaFileFactory::GetExtension)), 5U);
  EXPECT_EQ(Slot(&CMediaFileFactory::CreateMediaFile), 6U);
}

// The channel selector has no virtual destructor, so entries are slots.
TEST(SlotOrder, MediaFile) {
  EXPECT_EQ(EntryOf(&MediaAccessorChannelSelector::SelectChannel), 0U);
  EXPECT_EQ(EntryOf(&MediaAccessorChannelSelector::SelectChannels), 1U);
  EXPECT_EQ(EntryOf(&MediaAccessorChannelSelector::GetSelectedChannelCount), 2U);
  EXPECT_EQ(EntryOf(&MediaAccessorChannelSelector::GetSelectedChannels), 3U);
  EXPECT_EQ(EntryOf(&MediaAccessorChannelSelector::GetChannelMode), 4U);
  using WideOpen = QVERRORCODE_TAG (CMediaFile::*)(const wchar_t*);
  using NarrowOpen = QVERRORCODE_TAG (CMediaFile::*)(const char*);
  EXPECT_EQ(EntryOf(static_cast<WideOpen>(&CMediaFile::Open)), 5U);
  EXPECT_EQ(EntryOf(static_cast<NarrowOpen>(&CMediaFile::Open)), 6U);
  EXPECT_EQ(EntryOf(&CMediaFile::Close), 7U);
  EXPECT_EQ(EntryOf(&CMediaFile::IsOpen), 8U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetAvailableTracks), 9U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetAvailableTrackIDs), 10U);
  EXPECT_EQ(EntryOf(&CMediaFile::SelectTrack), 11U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetTrackChannelCount), 12U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetCurrentTrack), 13U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetMilliseconds), 14U);
  EXPECT_EQ(EntryOf(static_cast<WideFileText>(&CMediaFile::GetFileName)), 15U);
  EXPECT_EQ(EntryOf(static_cast<NarrowFileText>(&CMediaFile::GetFileName)), 16U);
  EXPECT_EQ(EntryOf(&CMediaFile::GetAvailableVideoTracks), 17U);
  EXPECT_EQ(EntryOf(&CMediaFile::VideoWidth), 18U);
  EXPECT_EQ(EntryOf(&CMediaFile::VideoHeight), 19U);
  EXPECT_EQ(EntryOf(&FileProbe::OpenFormat), 20U);
  EXPECT_EQ(EntryOf(static_cast<NarrowFileText>(&CMediaFile::GetFormatDescription)), 21U);
  EXPECT_EQ(EntryOf(static_cast<WideFileText>(&CMediaFile::GetFormatDescription)), 22U);
  EXPECT_EQ(EntryOf(&FileProbe::ReadRawBlock), 23U);
  EXPECT_EQ(EntryOf(&FileProbe::GetDefaultChannelMode), 24U);
  EXPECT_EQ(EntryOf(&CVOXMediaFile::SetSamplingFrequency), 32U);
}

// Which face comes first decides what a plain cast of the pointer costs, and is interface too.
TEST(SlotOrder, FirstFaces) {
  MediaAccessorMixerPtr mixer(MediaAccessorMixer::CreateInstance());
  const void* const whole = mixer.get();
  EXPECT_EQ(static_cast<CMediaSink*>(mixer.get()), whole);
  EXPECT_LT(whole, static_cast<void*>(static_cast<MediaAccessorChannelSelector*>(mixer.get())));
  EXPECT_LT(static_cast<void*>(static_cast<MediaAccessorChannelSelector*>(mixer.get())),
            static_cast<void*>(static_cast<CMediaAccessorDecorator*>(mixer.get())));
  MediaFilePtr file;
  const CMediaFileFactory* factory = nullptr;
  ASSERT_EQ(GetMediaFileFactory(0, factory), QVERR_OK);
  file.reset(factory->CreateMediaFile());
  EXPECT_EQ(static_cast<void*>(static_cast<MediaAccessorChannelSelector*>(file.get())),
            static_cast<void*>(file.get()));
}

}  // namespace
