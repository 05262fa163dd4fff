// Writing wave files, through the public interface.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/likeness.h"
#include "tests/test_files.h"
#include "tests/test_system.h"
#include "tests/wav_bytes.h"

namespace {

using namespace Quorvex;
using tests::Bytes;
using tests::FakeSource;
using tests::WavBytes;

class WAVFileWriter : public testing::Test {
 protected:
  QVERRORCODE_TAG Write(CMediaAccessor& source, bool replace = false) {
    return writer->WriteFile(&source, path.c_str(), replace);
  }

  // A fixture with its channels kept apart, as a source.
  static MediaFilePtr Open(const std::string& name) {
    MediaFilePtr file;
    EXPECT_EQ(MediaFileOpen(tests::Fixture(name).c_str(), file), QVERR_OK);
    file->SelectChannels(nullptr, 0, kChannelModeSeparate);
    return file;
  }

  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory.File(""))) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  const tests::TemporaryDirectory directory;
  const std::string path = directory.File("x.wav");
  const WAVFileWriterPtr writer{CWAVFileWriter::CreateInstance()};
};

// What stands between two offsets of a file.
Bytes Part(const Bytes& bytes, std::size_t begin, std::size_t end) {
  return {bytes.begin() + static_cast<std::ptrdiff_t>(begin),
          bytes.begin() + static_cast<std::ptrdiff_t>(end)};
}

Bytes ToBytes(const std::string& text) { return {text.begin(), text.end()}; }

TEST_F(WAVFileWriter, PCMByteForByte) {
  FakeSource source(2, {{1, -2, 3, -4}, {0x1234, -0x1234}});
  source.frequency = 44'100;
  ASSERT_EQ(Write(source), QVERR_OK);
  const std::string format = WavBytes::Number(1, 2) + WavBytes::Number(2, 2) +
                             WavBytes::Number(44'100, 4) + WavBytes::Number(176'400, 4) +
                             WavBytes::Number(4, 2) + WavBytes::Number(16, 2) +
                             WavBytes::Number(0, 2);
  const std::string data("\1\0\xFE\xFF\3\0\xFC\xFF\x34\x12\xCC\xED", 12);
  const std::string body = "WAVE" + WavBytes::Chunk("fmt ", format) + WavBytes::Chunk("data", data);
  EXPECT_EQ(tests::ReadBytes(path), ToBytes(WavBytes::Chunk("RIFF", body)));
}

// Every sample comes back at least as near to what it was as from libsndfile's file; of two code
// words that are equally near another may be chosen. GSM frames are the same. The codecs of Windows
// choose one further away now and then.
TEST_F(WAVFileWriter, CodesAsOtherProgramsDo) {
  struct Case {
    int coding;
    const char* samples;
    const char* coded;  // by another program
    bool isOnWindows;
  };
  const Case cases[] = {
      {kWAVOutputALaw, "sndfile_pcm16_stereo", "sndfile_alaw_stereo", true},
      {kWAVOutputMuLaw, "ffmpeg_pcm16_mono", "sndfile_ulaw_mono", true},
      {kWAVOutputGSM610, "ffmpeg_pcm16_mono", "ffmpeg_gsm610", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.coded);
    ASSERT_EQ(writer->SetOutputCoding(c.coding), QVERR_OK);
    const MediaFilePtr source = Open(std::string(c.samples) + ".wav");
    const QVERRORCODE_TAG written = Write(*source, true);
    if (tests::kSystemIsWindows && !c.isOnWindows) {
      EXPECT_EQ(written, QVERR_BAD_FORMAT);
      continue;
    }
    ASSERT_EQ(written, QVERR_OK);
    const MediaFilePtr file(CInputWAVMediaFile::CreateInstance());
    ASSERT_EQ(file->Open(path.c_str()), QVERR_OK);
    EXPECT_EQ(file->GetMilliseconds(), 250U) << "the count of what came in";
    file->SelectChannels(nullptr, 0, kChannelModeSeparate);
    const auto samples = tests::PullAll(*file);
    const auto original = tests::ReadSamples(tests::Fixture(std::string(c.samples) + ".s16"));
    const auto expected = tests::ReadSamples(tests::Fixture(std::string(c.coded) + ".s16"));
    ASSERT_EQ(samples.size(), expected.size());
    if (c.coding == kWAVOutputGSM610) {
      EXPECT_EQ(samples, expected);
      continue;
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const int further = std::abs(samples[i] - original[i]) - std::abs(expected[i] - original[i]);
      ASSERT_LE(further, tests::kSystemIsWindows ? 64 : 0) << i;
    }
  }
}

// One channel of interleaved samples.
std::vector<short> Side(const std::vector<short>& samples, std::size_t channels, std::size_t side) {
  std::vector<short> one;
  for (std::size_t i = side; i < samples.size(); i += channels) one.push_back(samples[i]);
  return one;
}

// Two voices, the last frame of which is not whole: the library reads what came in, as much later
// as the encoder looks ahead, and nothing of one side on the other; so does FFmpeg, to the end of
// the last frame, from a TrueSpeech file under the tag that it knows for its frames.
TEST_F(WAVFileWriter, SpeechCodingsAreReadByTheLibraryAndByFFmpeg) {
  constexpr std::size_t kFrames = 19'170;
  MediaFilePtr call;
  const std::string recording = MEDIA_ACCESSOR_RECORDINGS "/call.wav";
  ASSERT_EQ(MediaFileOpen(recording.c_str(), call), QVERR_OK);
  call->SelectChannels(nullptr, 0, kChannelModeSeparate);
  std::vector<short> both = tests::PullAll(*call);
  both.resize(kFrames * 2);
  const std::vector<short> caller = Side(both, 2, 0);
  std::vector<short> onTheRight(kFrames * 2);
  for (std::size_t i = 0; i < kFrames; ++i) onTheRight[2 * i + 1] = caller[i];
  struct Case {
    int coding;
    std::size_t delay;
    const std::vector<short>& samples;
  };
  for (const Case& c : {Case{kWAVOutputG729A, 40, caller},
                        {kWAVOutputG729A, 40, both},
                        {kWAVOutputG729A, 40, onTheRight},
                        {kWAVOutputTrueSpeech, 60, caller}}) {
    const std::size_t channels = c.samples.size() / kFrames;
    FakeSource source(static_cast<unsigned long>(channels), {c.samples});
    ASSERT_EQ(writer->SetOutputCoding(c.coding), QVERR_OK);
    ASSERT_EQ(Write(source, true), QVERR_OK);
    for (const bool isByFFmpeg : {false, true}) {
      if (isByFFmpeg && tests::kSystemIsWindows) continue;
      if (isByFFmpeg && c.coding == kWAVOutputTrueSpeech) {
        Bytes bytes = tests::ReadBytes(path);
        bytes[20] = 0x42;
        tests::WriteBytes(path, bytes);
      }
      MediaFilePtr file(isByFFmpeg ? CInputWAVMediaFile::CreateInstance() : nullptr);
      ASSERT_EQ(isByFFmpeg ? file->Open(path.c_str()) : MediaFileOpen(path.c_str(), file),
                QVERR_OK);
      EXPECT_EQ(file->GetMilliseconds(), kFrames / 8);
      file->SelectChannels(nullptr, 0, kChannelModeSeparate);
      const std::vector<short> read = tests::PullAll(*file);
      ASSERT_EQ(read.size(), (isByFFmpeg ? kFrames + 30 : kFrames) * channels);
      for (std::size_t side = 0; side < channels; ++side) {
        SCOPED_TRACE(testing::Message()
                     << c.coding << ", by FFmpeg: " << isByFFmpeg << ", side " << side);
        const std::vector<short> written = Side(c.samples, channels, side);
        const std::vector<short> heard = Side(read, channels, side);
        const double level = tests::Level(written);
        EXPECT_NEAR(tests::Level(heard), level, level * 0.15 + 4);
        if (level > 0) {
          EXPECT_GT(tests::Correlation(written, heard, c.delay), 0.8);
        }
        const std::vector<short> other = Side(c.samples, channels, channels - 1 - side);
        if (channels == 2) {
          EXPECT_LT(std::abs(tests::Correlation(other, heard, c.delay)), 0.1);
        }
      }
    }
  }
}

// A buffer of the writer, which codes it as a whole, holds 65,536 samples.
TEST_F(WAVFileWriter, MoreThanABufferAtOnce) {
  std::vector<short> many(200'001);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<short>(i * 7);
  for (const int coding : {kWAVOutputALaw, kWAVOutputPCM16}) {
    FakeSource source(1, {many, {1, 2, 3}});
    ASSERT_EQ(writer->SetOutputCoding(coding), QVERR_OK);
    ASSERT_EQ(Write(source, true), QVERR_OK);
    const MediaFilePtr file(CInputWAVMediaFile::CreateInstance());
    ASSERT_EQ(file->Open(path.c_str()), QVERR_OK);
    const auto samples = tests::PullAll(*file);
    ASSERT_EQ(samples.size(), many.size() + 3);
    const int furthest = coding == kWAVOutputPCM16 ? 0 : 512;  // half of the widest interval
    for (std::size_t i = 0; i < many.size(); ++i) {
      ASSERT_LE(std::abs(samples[i] - many[i]), furthest) << i;
    }
  }
}

// Calls the writer that reads it.
class NestingSource : public FakeSource {
 public:
  NestingSource(CWAVFileWriter& writer, const std::string& path)
      : FakeSource(1, {}), writer_(writer), path_(path) {}
  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override {
    EXPECT_EQ(writer_.SetOutputCoding(kWAVOutputALaw), QVERR_ALREADY_OPEN);
    EXPECT_EQ(writer_.WriteFile(this, path_.c_str(), true), QVERR_ALREADY_OPEN);
    return FakeSource::ReadBlock(samples, frames, context);
  }

 private:
  CWAVFileWriter& writer_;
  const std::string path_;
};

TEST_F(WAVFileWriter, IsNotForUseFromWithin) {
  NestingSource source(*writer, path);
  EXPECT_EQ(Write(source), QVERR_OK);
}

// "fact" behind the data, of odd size here, and only when it is not PCM.
TEST_F(WAVFileWriter, TheCountStandsBehindCodedData) {
  FakeSource source(1, {{0, 32'767, -32'768}});
  ASSERT_EQ(writer->SetOutputCoding(kWAVOutputMuLaw), QVERR_OK);
  ASSERT_EQ(Write(source), QVERR_OK);
  const Bytes bytes = tests::ReadBytes(path);
  const std::string data("data\3\0\0\0\xFF\x80\0\0", 12);
  const std::string expected = data + WavBytes::Chunk("fact", WavBytes::Number(3, 4));
  ASSERT_GT(bytes.size(), expected.size());
  EXPECT_EQ(Part(bytes, bytes.size() - expected.size(), bytes.size()), ToBytes(expected));
  EXPECT_EQ(Part(bytes, 4, 8), ToBytes(WavBytes::Number(bytes.size() - 8, 4)));
}

TEST_F(WAVFileWriter, CodingsThatCannotBeChosen) {
  EXPECT_EQ(writer->SetOutputCoding(-1), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(writer->SetOutputCoding(6), QVERR_INVALID_ARGUMENT);
  FakeSource source(1, {{1}});
  ASSERT_EQ(Write(source), QVERR_OK);
  EXPECT_EQ(tests::ReadBytes(path)[20], 1) << "still PCM";
  wchar_t text[32];
  EXPECT_EQ(writer->GetDescription(text, 32), 16U);
  EXPECT_STREQ(text, L"WAV File Writer");
}

// Ends with a code, an exception, or another number of channels, after a block.
class FailingSource : public FakeSource {
 public:
  enum class Way { kCode, kException, kChannels };
  explicit FailingSource(Way way) : FakeSource(1, {{1, 2, 3}, {4, 5, 6}}), way_(way) {}

  QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames, void* context) override {
    if (read_++ == 0) return FakeSource::ReadBlock(samples, frames, context);
    if (way_ == Way::kException) throw std::runtime_error("source");
    if (way_ == Way::kChannels) return FakeSource::ReadBlock(samples, frames, context);
    return QVERR_READ_PAST_END;
  }
  unsigned long GetChannelCount() const override {
    return way_ == Way::kChannels && read_ > 1 ? 2 : 1;
  }

 private:
  const Way way_;
  int read_ = 0;
};

TEST_F(WAVFileWriter, AFailureLeavesWhatWasThere) {
  using Way = FailingSource::Way;
  const std::pair<Way, QVERRORCODE_TAG> ways[] = {{Way::kCode, QVERR_READ_PAST_END},
                                                  {Way::kException, QVERR_CREATE_FAILED},
                                                  {Way::kChannels, QVERR_UNSUPPORTED_CHANNELS}};
  const Bytes old = {'o', 'l', 'd'};
  for (const bool exists : {false, true}) {
    for (const auto& [way, code] : ways) {
      if (exists) tests::WriteBytes(path, old);
      FailingSource source(way);
      EXPECT_EQ(Write(source, true), code);
      EXPECT_EQ(Files(), exists ? std::vector<std::string>{"x.wav"} : std::vector<std::string>());
    }
  }
  EXPECT_EQ(tests::ReadBytes(path), old);
  FakeSource source(1, {{1}});
  EXPECT_EQ(Write(source, false), QVERR_FILE_CREATE_FAILED) << "exists";
  EXPECT_EQ(tests::ReadBytes(path), old);
  EXPECT_EQ(Write(source, true), QVERR_OK);
  EXPECT_NE(tests::ReadBytes(path), old);
}

TEST_F(WAVFileWriter, RefusesBeforeAnythingIsCreated) {
  FakeSource good(1, {{1}});
  FakeSource silent(1, {{1}});
  silent.frequency = 0;
  FakeSource empty(0, {});
  FakeSource wide(32'768, {});
  FakeSource wider(65'537, {});
  FakeSource fast(2, {});
  fast.frequency = 0xFFFFFFFF;
  EXPECT_EQ(writer->WriteFile(nullptr, path.c_str(), true), QVERR_NO_SOURCE);
  EXPECT_EQ(writer->WriteFile(&good, "", true), QVERR_BAD_FILE_NAME);
  EXPECT_EQ(writer->WriteFile(&good, static_cast<const wchar_t*>(nullptr), true),
            QVERR_BAD_FILE_NAME);
  EXPECT_EQ(Write(silent), QVERR_NO_SAMPLING_FREQUENCY);
  EXPECT_EQ(Write(empty), QVERR_BAD_CHANNEL_COUNT);
  EXPECT_EQ(Write(wide), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(Write(wider), QVERR_UNSUPPORTED_CHANNELS);
  EXPECT_EQ(Write(fast), QVERR_INVALID_ARGUMENT);
  EXPECT_EQ(writer->WriteFile(&good, directory.File("missing/x.wav").c_str(), true),
            QVERR_PATH_NOT_FOUND);
  EXPECT_EQ(writer->WriteFile(&good, directory.File("").c_str(), true), QVERR_FILE_CREATE_FAILED);
  EXPECT_EQ(Files(), std::vector<std::string>());
}

// An empty source makes a file without frames, which opens again.
TEST_F(WAVFileWriter, NoFrames) {
  FakeSource source(1, {});
  ASSERT_EQ(Write(source), QVERR_OK);
  const MediaFilePtr file(CInputWAVMediaFile::CreateInstance());
  ASSERT_EQ(file->Open(path.c_str()), QVERR_OK);
  EXPECT_EQ(tests::PullAll(*file).size(), 0U);
}

}  // namespace
