// media-accessor as its users run it: what it prints, what it writes, what it returns.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/resampling.h"
#include "tests/test_files.h"
#include "tests/test_system.h"

namespace {

using tests::Fixture;

using Arguments = std::vector<std::string>;

Arguments operator+(Arguments first, const Arguments& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class Program : public testing::Test {
 protected:
  // Runs the program, its output into a file of the test's own or a given one; returns its exit
  // code.
  int Run(const Arguments& arguments, const std::string& into = "") {
    const std::string out = into.empty() ? directory.File("out.txt") : into;
    const std::string err = directory.File("err.txt");
    const int code = tests::Process(Arguments{MEDIA_ACCESSOR_PROGRAM} + arguments, out, err).Wait();
    output = into.empty() ? Text(out) : "";
    errors = Text(err);
    return code;
  }

  // Text that a program wrote, which has the system's line ends.
  static std::string Text(const std::string& path) {
    const tests::Bytes bytes = tests::ReadBytes(path);
    std::string text(bytes.begin(), bytes.end());
    std::erase(text, '\r');
    return text;
  }

  const tests::TemporaryDirectory directory;
  std::string output;
  std::string errors;
};

TEST_F(Program, InfoAsATable) {
  EXPECT_EQ(Run({"info", Fixture("sox_alaw_stereo.wav")}), 0);
  EXPECT_NE(output.find("Portable WAV Format  CCITT A-Law  8000  2         0:00:00.250\n"),
            std::string::npos)
      << output;
  EXPECT_EQ(errors, "");
  EXPECT_EQ(Run({"info", "nowhere.wav"}), 1);
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors,
            "media-accessor: nowhere.wav: 300 QVERR_FILE_OPEN_FAILED: the file could not be "
            "opened, sized or positioned\n");
}

TEST_F(Program, InfoAsJson) {
  const std::string good = Fixture("ffmpeg_mulaw_stereo.wav");
  const std::string bad = Fixture("refused_aiff.wav");
  const std::string strange = directory.File("") + tests::kOddNarrowFileName;
  EXPECT_EQ(Run({"info", "--json", "--exact", good, bad, strange}), 1);
  const auto list = nlohmann::json::parse(output);
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0], (nlohmann::json{{"file", good},
                                     {"result", 0},
                                     {"result_name", "QVERR_OK"},
                                     {"reader", "Portable WAV Format"},
                                     {"encoding", "CCITT u-Law"},
                                     {"sampling_frequency", 8000},
                                     {"channels", 2},
                                     {"milliseconds", 250},
                                     {"exact_milliseconds", 250}}));
  EXPECT_EQ(list[1],
            (nlohmann::json{{"file", bad}, {"result", 605}, {"result_name", "QVERR_BAD_FORMAT"}}));
  EXPECT_EQ(list[2]["result"], 300);
  EXPECT_EQ(Run({"info", "--json", good}), 0);
  EXPECT_FALSE(nlohmann::json::parse(output)[0].contains("exact_milliseconds"));
}

TEST_F(Program, AnyFileNameInAndOut) {
  const std::string input = directory.File("\xF0\x9D\x84\x9E\xC3\xBC \xE6\x97\xA5.wav");
  const std::string raw = directory.File("\xE6\x97\xA5.raw");
  tests::WriteBytes(input, tests::ReadBytes(Fixture("sox_mulaw_mono.wav")));
  EXPECT_EQ(Run({"info", "--json", input}), 0) << errors;
  EXPECT_EQ(nlohmann::json::parse(output)[0]["file"], input);
  EXPECT_EQ(Run({"decode", input, "-o", raw}), 0) << errors;
  EXPECT_EQ(tests::ReadSamples(raw), tests::ReadSamples(Fixture("sox_mulaw_mono.s16")));
  EXPECT_EQ(Run({"decode", input, "-o", input}), 2) << "never over its own input";
}

TEST_F(Program, DecodeInEveryMode) {
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const auto stereo = tests::ReadSamples(Fixture("sox_pcm16_stereo.s16"));
  std::vector<short> average;
  std::vector<short> sum;
  std::vector<short> right;
  for (std::size_t i = 0; i < stereo.size(); i += 2) {
    average.push_back(static_cast<short>((stereo[i] + stereo[i + 1]) / 2));
    sum.push_back(static_cast<short>(stereo[i] + stereo[i + 1]));  // quiet enough not to clip
    right.push_back(stereo[i + 1]);
  }
  struct Case {
    Arguments options;
    const std::vector<short>& samples;
  };
  const Case cases[] = {{{}, average},
                        {{"--channels", "0,1", "--mode", "average"}, average},
                        {{"--mode", "sum"}, sum},
                        {{"--mode", "separate"}, stereo},
                        {{"--channels", "1"}, right},
                        {{"--channels", "1", "--mode", "separate"}, right},
                        // A full selection.
                        {{"--mode", "separate", "--channels", "1,0"}, stereo},
                        {{"--reader", "Portable WAV Format"}, average}};
  const std::string raw = directory.File("x.raw");
  for (const Case& c : cases) {
    EXPECT_EQ(Run(Arguments{"decode"} + c.options + Arguments{input, "-o", raw}), 0) << errors;
    EXPECT_EQ(tests::ReadSamples(raw), c.samples) << testing::PrintToString(c.options);
    EXPECT_EQ(errors, "");
  }
  EXPECT_EQ(Run({"decode", "--mode", "separate", "-o", "-", input}), 0);
  EXPECT_EQ(tests::ReadSamples(directory.File("out.txt")), stereo) << "to standard output";
}

TEST_F(Program, DecodeRefusals) {
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const std::string raw = directory.File("x.raw");
  EXPECT_EQ(Run({"decode", "--channels", "0,2", input, "-o", raw}), 1);
  EXPECT_NE(errors.find("609 QVERR_UNSUPPORTED_CHANNELS"), std::string::npos) << errors;
  EXPECT_NE(errors.find("its channels are 0 to 1"), std::string::npos) << errors;
  EXPECT_EQ(Run({"decode", "nowhere.wav", "-o", raw}), 1);
  EXPECT_FALSE(std::filesystem::exists(raw)) << "nothing is begun for a file that does not open";
  // Never over its own input.
  const std::string copy = directory.File("copy.wav");
  std::filesystem::copy(input, copy);
  EXPECT_EQ(Run({"decode", copy, "-o", copy}), 2);
  EXPECT_EQ(std::filesystem::file_size(copy), std::filesystem::file_size(input));
  EXPECT_EQ(Run({"decode", input, "-o", directory.File("no/such/x.raw")}), 1);
  EXPECT_NE(errors.find("cannot be written: No such file"), std::string::npos) << errors;
}

TEST_F(Program, AClosedPipeIsReported) {
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const std::string err = directory.File("pipe.txt");
  const Arguments program = {MEDIA_ACCESSOR_PROGRAM};
  for (const Arguments& arguments : {Arguments{"decode", "-o", "-", input}, Arguments{"formats"}}) {
    EXPECT_EQ(tests::RunWithoutReader(program + arguments, err), 1);
    EXPECT_NE(Text(err).find("standard output: cannot be written: "), std::string::npos)
        << Text(err);
  }
}

TEST_F(Program, AFullDiskIsReported) {
  if (tests::kFullDevice == nullptr)
    GTEST_SKIP() << "this system has no device that is always full";
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const std::string full = tests::kFullDevice;
  EXPECT_EQ(Run({"decode", "-o", full, input}), 1);
  EXPECT_NE(errors.find(full + ": cannot be written: No space left"), std::string::npos) << errors;
  for (const Arguments& arguments :
       {Arguments{"info", input}, Arguments{"--help"}, Arguments{"info", "--help"},
        Arguments{"--version"}, Arguments{"formats"}}) {
    EXPECT_EQ(Run(arguments, full), 1);
    EXPECT_NE(errors.find("standard output: cannot be written: No space left"), std::string::npos)
        << errors;
  }
}

TEST_F(Program, WrongUsage) {
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const Arguments decode = {"decode", "-o", "-", input};
  for (const Arguments& arguments :
       {Arguments{}, Arguments{"unknown"}, Arguments{"info"}, Arguments{"decode", input},
        decode + Arguments{"--mode", "loud"}, decode + Arguments{"--channels", "x"},
        decode + Arguments{"--channels=-1"}, decode + Arguments{"--channels", "0,,"},
        decode + Arguments{"--channels", "0x1"}, decode + Arguments{"--reader", "nobody"},
        Arguments{"info", "--reader", "", input}, Arguments{"info", "--reader", "nobody", input}}) {
    EXPECT_EQ(Run(arguments), 2) << testing::PrintToString(arguments);
    EXPECT_EQ(output, "") << testing::PrintToString(arguments);
    EXPECT_NE(errors, "") << testing::PrintToString(arguments);
  }
  EXPECT_EQ(Run({"--help"}), 0);
  EXPECT_EQ(Run({"decode", "--help"}), 0);
  EXPECT_NE(output.find("a full\n"), std::string::npos) << "the rule for a full selection";
  EXPECT_EQ(Run({"--version"}), 0);
  EXPECT_EQ(output, "media-accessor 9.0.0.288 (185833).288\n");
}

TEST_F(Program, TheFrequencyOfVoxFiles) {
  const std::string input = Fixture("vox_sox.vox");
  EXPECT_EQ(Run({"info", "--json", input}), 0);
  EXPECT_EQ(nlohmann::json::parse(output)[0]["sampling_frequency"], 6000);
  for (const Arguments& arguments : {Arguments{"info", "--json", "--vox-rate", "8000", input},
                                     Arguments{"--vox-rate=8000", "info", "--json", input}}) {
    EXPECT_EQ(Run(arguments), 0) << errors;
    EXPECT_EQ(nlohmann::json::parse(output)[0]["milliseconds"], 250);
  }
  for (const char* rate : {"0", "-1", "8k", "4294967296", ""}) {
    EXPECT_EQ(Run({"info", "--vox-rate", rate, input}), 2) << rate;
    EXPECT_NE(errors.find("is a number of hertz"), std::string::npos) << errors;
  }
}

std::vector<short> SamplesOfFile(const std::string& path, int hertz) {
  Quorvex::MediaFilePtr file;
  EXPECT_EQ(Quorvex::MediaFileOpen(path.c_str(), file), Quorvex::QVERR_OK);
  if (file == nullptr) return {};
  EXPECT_EQ(file->GetSamplingFrequency(), static_cast<unsigned long>(hertz));
  file->SelectChannels(nullptr, 0, Quorvex::kChannelModeSeparate);
  return tests::PullAll(*file);
}

std::vector<short> Channel(const std::vector<short>& stereo, std::size_t channel) {
  std::vector<short> samples;
  for (std::size_t i = channel; i < stereo.size(); i += 2) samples.push_back(stereo[i]);
  return samples;
}

TEST_F(Program, AudioAtAnotherRate) {
  const std::string call = std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.wav";
  const std::vector<short> both = SamplesOfFile(call, 8000);
  const std::string out = directory.File("out.wav");
  const Arguments decode = {MEDIA_ACCESSOR_PROGRAM, "decode", call, "-o", out};
  const Arguments separate = decode + Arguments{"--mode", "separate"};
  const Arguments convert = {MEDIA_ACCESSOR_PROGRAM, "convert", call, out, "--force"};
  struct Case {
    Arguments command;
    std::vector<std::size_t> channels;
    int hertz;
  };
  const Case cases[] = {
      {separate + Arguments{"--rate", "11025"}, {0, 1}, 11025},
      {decode + Arguments{"--channels", "0", "--rate=129"}, {0}, 129},
      {convert + Arguments{"--channels", "1", "--rate", "44100"}, {1}, 44100},
      {{MEDIA_ACCESSOR_RESAMPLE_CHANNEL, call, "1", "6000", out}, {1}, 6000},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.command));
    ASSERT_EQ(tests::Process(c.command).Wait(), 0);
    const std::vector<short> samples =
        c.command[1] == "decode" ? tests::ReadSamples(out) : SamplesOfFile(out, c.hertz);
    tests::IdealResampling ideal(8000, c.hertz);
    for (const std::size_t channel : c.channels) {
      tests::ExpectResampled(ideal, Channel(both, channel),
                             c.channels.size() > 1 ? Channel(samples, channel) : samples);
    }
  }
  EXPECT_EQ(tests::Process(separate + Arguments{"--rate", "8000"}).Wait(), 0);
  EXPECT_EQ(tests::ReadSamples(out), both) << "its own frequency: the samples as they are";
}

TEST_F(Program, RatesThatAreRefused) {
  const std::string input = Fixture("sox_mulaw_mono.wav");
  const std::string out = directory.File("out.wav");
  for (const char* rate : {"x", "0", "-1", "8k", "1e9999", "99999999999", ""}) {
    EXPECT_EQ(Run({"convert", input, out, "--rate", rate}), 2) << rate;
    EXPECT_NE(errors.find("--rate: a sampling frequency is a number of hertz from 1"),
              std::string::npos)
        << errors;
  }
  for (const char* rate : {"128", "8192001"}) {
    for (const Arguments& command :
         {Arguments{"convert", input, out}, Arguments{"decode", input, "-o", out}}) {
      EXPECT_EQ(Run(command + Arguments{"--rate", rate}), 1);
      EXPECT_NE(errors.find(std::string("8000 Hz cannot be resampled to ") + rate + " Hz"),
                std::string::npos)
          << errors;
    }
  }
  EXPECT_FALSE(std::filesystem::exists(out)) << "nothing is begun";
}

TEST_F(Program, ConvertWritesAWholeFileOrNone) {
  const std::string input = Fixture("sox_ms_adpcm_mono.wav");
  const std::string out = directory.File("out.wav");
  EXPECT_EQ(Run({"convert", input, out}), 0) << errors;
  EXPECT_EQ(output.find(out + ": 0.187 s of audio, "), 0U) << output;
  EXPECT_EQ(Run({"info", "--json", "--exact", out}), 0);
  EXPECT_EQ(nlohmann::json::parse(output)[0]["exact_milliseconds"], 187);
  const tests::Bytes pcm = tests::ReadBytes(out);
  EXPECT_EQ(Run({"convert", input, out, "--coding", "alaw"}), 2);
  EXPECT_NE(errors.find("exists; --force replaces it"), std::string::npos) << errors;
  EXPECT_EQ(tests::ReadBytes(out), pcm);
  EXPECT_EQ(Run({"convert", out, out, "--force"}), 2) << "never over its own input";
  EXPECT_EQ(Run({"convert", out, directory.File("alaw.wav"), "--coding", "alaw"}), 0) << errors;
  EXPECT_EQ(Run({"convert", input, "-"}), 2);
  EXPECT_EQ(Run({"convert", input, directory.File("missing/x.wav")}), 1);
  EXPECT_NE(errors.find("308 QVERR_PATH_NOT_FOUND"), std::string::npos) << errors;
  EXPECT_EQ(Run({"convert", Fixture("refused_aiff.wav"), directory.File("none.wav")}), 1);
  EXPECT_FALSE(std::filesystem::exists(directory.File("none.wav")));
  const std::string stereo = Fixture("sox_pcm16_stereo.wav");
  EXPECT_EQ(Run({"convert", stereo, out, "--force", "--mode", "separate"}), 0) << errors;
  const tests::Bytes whole = tests::ReadBytes(out);
  const auto samples = tests::ReadBytes(Fixture("sox_pcm16_stereo.s16"));
  ASSERT_GT(whole.size(), samples.size());
  EXPECT_TRUE(std::equal(samples.rbegin(), samples.rend(), whole.rbegin()));
}

// A disk that is full, and an end that comes from outside.
TEST_F(Program, ConvertThatIsCutShortLeavesNothing) {
  if (tests::kSystemIsWindows) GTEST_SKIP() << "needs a shell";
  const std::string input = directory.File("long.wav");
  const std::string out = directory.File("out.wav");
  tests::Bytes header = tests::ReadBytes(Fixture("sox_pcm16_stereo.wav"));
  header.resize(44);
  constexpr std::uint32_t kDataSize = 0x70000000;
  for (std::size_t i = 0; i < 4; ++i)
    header[40 + i] = static_cast<std::uint8_t>(kDataSize >> 8 * i);
  tests::WriteBytes(input, header);
  std::filesystem::resize_file(input, 44 + std::uintmax_t{kDataSize});
  const auto shell = [&](const std::string& before) {
    const std::string command = before + " \"$0\" convert \"$1\" \"$2\"";
    const std::string err = directory.File("err.txt");
    const int code =
        tests::Process({"/bin/sh", "-c", command, MEDIA_ACCESSOR_PROGRAM, input, out}, "", err)
            .Wait();
    errors = Text(err);
    EXPECT_FALSE(std::filesystem::exists(out));
    for (const auto& entry : std::filesystem::directory_iterator(directory.File(""))) {
      EXPECT_NE(entry.path().extension(), ".part");
    }
    return code;
  };
  EXPECT_EQ(shell("ulimit -f 1000;"), 1);
  EXPECT_NE(errors.find("305 QVERR_FILE_WRITE_FAILED"), std::string::npos) << errors;
  EXPECT_EQ(shell("timeout --preserve-status -s TERM 0.1"), 128 + 15);
}

TEST_F(Program, CodecDecodesWholeFramesAsFFmpegDoes) {
  const tests::Bytes part = tests::ReadBytes(Fixture("g722_ffmpeg.g722"));
  const auto begin = tests::ReadSamples(Fixture("g722_ffmpeg.s16"));
  tests::Bytes octets;  // more than a block
  while (octets.size() <= 65536) octets.insert(octets.end(), part.begin(), part.end());
  const std::string input = directory.File("x.g722");
  const std::string raw = directory.File("x.raw");
  tests::WriteBytes(input, octets);
  const Arguments codec = {"codec", "decode", "--codec", "g722", input, "-o"};
  EXPECT_EQ(Run(codec + Arguments{raw}), 0) << errors;
  auto samples = tests::ReadSamples(raw);
  EXPECT_EQ(samples.size(), (octets.size() + 79) / 80 * 160);
  EXPECT_TRUE(std::equal(begin.begin(), begin.end(), samples.begin()));
  EXPECT_EQ(Run(codec + Arguments{"-"}), 0);
  EXPECT_EQ(tests::ReadBytes(directory.File("out.txt")), tests::ReadBytes(raw));
  EXPECT_EQ(errors, "");
  // The reader has other blocks.
  EXPECT_EQ(Run({"decode", input, "-o", raw}), 0);
  samples.resize(octets.size() * 2);
  EXPECT_EQ(samples, tests::ReadSamples(raw));
}

// Mixed frames, each of which tells its length, and more than a block of them.
TEST_F(Program, CodecDecodesMixedFramesAsFFmpegDoes) {
  const std::string part = Fixture("g723_1_mixed.g723_1");
  const auto begin = tests::ReadSamples(Fixture("g723_1_mixed.s16"));
  const std::string raw = directory.File("x.raw");
  EXPECT_EQ(Run({"codec", "decode", "--codec", "g723-63", part, "-o", raw}), 0) << errors;
  EXPECT_EQ(tests::ReadSamples(raw), begin);
  const tests::Bytes bytes = tests::ReadBytes(part);
  tests::Bytes frames;
  std::size_t times = 0;
  for (; frames.size() <= 65536; ++times) frames.insert(frames.end(), bytes.begin(), bytes.end());
  frames.pop_back();  // the last frame
  frames.pop_back();  // a part of the one before, which is decoded all the same
  const std::string input = directory.File("x.g723");
  tests::WriteBytes(input, frames);
  EXPECT_EQ(Run({"codec", "decode", "--codec", "g723-53", input, "-o", raw}), 0) << errors;
  EXPECT_EQ(tests::ReadSamples(raw).size(), begin.size() * times - 240);
}

TEST_F(Program, ConvertAndCodecMakeTheSameSpeechFrames) {
  struct Case {
    std::string coding;
    std::string codec;
    std::string wide;  // of more channels than the coding takes
    std::string refusal;
    std::size_t bytes;
    std::string encoding;
  };
  const std::string input = std::string(MEDIA_ACCESSOR_RECORDINGS) + "/call.wav";
  const Case cases[] = {
      {"g729a", "g729a", Fixture("au_sox_three_channels.au"),
       "is not written here for 3 channel(s) at 8000 Hz", 2400, "ITU-T G.729A 8 kbit/s"},
      {"truespeech", "g723-53", input, "614 QVERR_MONO_ONLY: the coding is written only in mono",
       1600, "ITU-T G.723.1"}};
  for (const Case& c : cases) {
    const std::string wav = directory.File(c.coding + ".wav");
    const std::string raw = directory.File("x.raw");
    const std::string coded = directory.File(c.codec == "g729a" ? "x.g729a" : "x.g723");
    const Arguments convert = {"convert", "--coding", c.coding};
    EXPECT_EQ(Run(convert + Arguments{"--rate", "16000", input, wav}), 2);
    EXPECT_NE(errors.find("--coding " + c.coding + " is always 8000 Hz"), std::string::npos)
        << errors;
    EXPECT_EQ(Run(convert + Arguments{"--mode", "separate", c.wide, wav}), 1);
    EXPECT_NE(errors.find(c.refusal), std::string::npos) << errors;
    EXPECT_FALSE(std::filesystem::exists(wav));
    EXPECT_EQ(Run(convert + Arguments{"--channels", "0", input, wav}), 0) << errors;
    EXPECT_EQ(Run({"decode", "--channels", "0", input, "-o", raw}), 0) << errors;
    EXPECT_EQ(Run({"codec", "encode", "--codec", c.codec, raw, "-o", coded}), 0) << errors;
    const tests::Bytes frames = tests::ReadBytes(coded);
    const tests::Bytes file = tests::ReadBytes(wav);
    ASSERT_EQ(frames.size(), c.bytes);
    ASSERT_EQ(file.size(), 46 + frames.size() + 12);
    EXPECT_TRUE(std::equal(frames.begin(), frames.end(), file.begin() + 46));
    std::vector<std::string> made = {wav};
    if (c.coding == "g729a") made.push_back(coded);
    for (const std::string& name : made) {
      EXPECT_EQ(Run({"info", name, "--json", "--exact"}), 0) << errors;
      const auto facts = nlohmann::json::parse(output)[0];
      EXPECT_EQ(facts["encoding"], c.encoding);
      EXPECT_EQ(facts["exact_milliseconds"], 2400);
    }
  }
}

TEST_F(Program, CodecRefusals) {
  const std::string input = directory.File("x.g722");
  tests::WriteBytes(input, tests::Bytes(160, 1));
  struct Case {
    Arguments arguments;
    int code;
    const char* error;
  };
  const std::string raw = directory.File("x.raw");
  const Arguments decode = {"decode", input, "-o", raw, "--codec"};
  const Arguments encode = {"encode", input, "-o", raw, "--codec"};
  const Case cases[] = {
      {decode + Arguments{"g723-53", "--bit-rate", "6300"}, 2, "has to be 5300, not 6300"},
      {encode + Arguments{"g722-1"}, 1, "--codec g722-1: this codec is decoded only"},
      {decode + Arguments{"g722-1"}, 2, "needs a --bit-rate: 24000 or 32000"},
      {decode + Arguments{"g729a", "--bit-rate", "6400"}, 2, "has to be 8000, not 6400"},
      {decode + Arguments{"g722", "--bit-rate", "64k"}, 2, "is a number of bits a second"},
      {decode + Arguments{"g711"}, 2, "g711"},
      {{"decode", input, "-o", raw}, 2, "--codec is required"},
      {{"recode", input, "-o", raw, "--codec", "g722"}, 2, "recode"},
      {{"decode", input, "-o", input, "--codec", "g722"}, 2, "is the input file"},
      {{"decode", "nowhere", "-o", raw, "--codec", "g722"}, 1, "nowhere: cannot be read: No such"},
      {{"decode", directory.File(""), "-o", raw, "--codec", "g722"}, 1, "cannot be read"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Run(Arguments{"codec"} + c.arguments), c.code) << c.error;
    EXPECT_NE(errors.find(c.error), std::string::npos) << errors;
    EXPECT_FALSE(std::filesystem::exists(raw)) << "nothing is begun";
  }
  EXPECT_EQ(tests::ReadBytes(input).size(), 160U);
  EXPECT_EQ(Run({"codec", "decode", "--codec", "g722", input, "-o", directory.File("no/x")}), 1);
  EXPECT_NE(errors.find("cannot be written: No such file"), std::string::npos) << errors;
}

TEST_F(Program, VerboseTellsWhatWasTried) {
  const std::string input = Fixture("refused_aiff.wav");
  for (const Arguments& arguments :
       {Arguments{"--verbose", "info", input}, Arguments{"info", input, "--verbose"}}) {
    EXPECT_EQ(Run(arguments), 1);
    EXPECT_NE(errors.find(input + ": Portable WAV Format: 605 QVERR_BAD_FORMAT\n"),
              std::string::npos)
        << errors;
  }
  EXPECT_EQ(Run({"info", input}), 1);
  EXPECT_EQ(errors.find("Portable WAV Format"), std::string::npos) << errors;
}

TEST_F(Program, Formats) {
  EXPECT_EQ(Run({"formats"}), 0);
  EXPECT_EQ(output,
            "EXTENSION  CANDIDATES\n"
            "alaw       AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format\n"
            "au         Sun AU Format\n"
            "g722       AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format\n"
            "g729a      AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format\n"
            "mulaw      AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format\n"
            "opus       Opus media format\n"
            "vox        Oki/Dialogic VOX Format\n"
            "vx8        Oki/Dialogic VOX Format\n"
            "wav        Portable WAV Format, AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format, "
            "Microsoft WAV Format\n");
  EXPECT_EQ(Run({"formats", "--json"}), 0);
  EXPECT_EQ(nlohmann::json::parse(output)[8],
            (nlohmann::json{
                {"extension", "wav"},
                {"candidates",
                 {"Portable WAV Format", "AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format",
                  "Microsoft WAV Format"}}}));
}

}  // namespace
