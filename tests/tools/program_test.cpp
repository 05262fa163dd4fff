// media-accessor as its users run it: what it prints, what it writes, what it returns.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/test_files.h"

namespace {

using tests::Fixture;

class Program : public testing::Test {
 protected:
  // Runs the program with arguments that the shell reads, its output into a file of the test's own
  // or a given one; returns its exit code.
  int Run(const std::string& arguments, const std::string& into = "") {
    const std::string out = into.empty() ? directory.File("out.txt") : into;
    const std::string err = directory.File("err.txt");
    const std::string command = std::string("\"") + MEDIA_ACCESSOR_PROGRAM + "\" " + arguments +
                                " > \"" + out + "\" 2> \"" + err + "\"";
    const int status = std::system(command.c_str());
    output = into.empty() ? Text(out) : "";
    errors = Text(err);
    return WEXITSTATUS(status);
  }

  static std::string Text(const std::string& path) {
    const tests::Bytes bytes = tests::ReadBytes(path);
    return std::string(bytes.begin(), bytes.end());
  }

  static std::string Quoted(const std::string& path) { return " \"" + path + "\" "; }

  const tests::TemporaryDirectory directory;
  std::string output;
  std::string errors;
};

TEST_F(Program, InfoAsATable) {
  EXPECT_EQ(Run("info" + Quoted(Fixture("sox_alaw_stereo.wav"))), 0);
  EXPECT_NE(output.find("Portable WAV Format  CCITT A-Law  8000  2         0:00:00.250\n"),
            std::string::npos)
      << output;
  EXPECT_EQ(errors, "");
  EXPECT_EQ(Run("info nowhere.wav"), 1);
  EXPECT_EQ(output, "");
  EXPECT_EQ(errors,
            "media-accessor: nowhere.wav: 300 QVERR_FILE_OPEN_FAILED: the file could not be "
            "opened, sized or positioned\n");
}

TEST_F(Program, InfoAsJson) {
  const std::string good = Fixture("ffmpeg_mulaw_stereo.wav");
  const std::string bad = Fixture("refused_float.wav");
  const std::string strange = directory.File("\xFF\"\n.wav");
  tests::WriteBytes(strange, {});
  EXPECT_EQ(Run("info --json --exact" + Quoted(good) + Quoted(bad) + " '" + strange + "'"), 1);
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
  EXPECT_EQ(list[2]["result"], 605);
  EXPECT_EQ(Run("info --json" + Quoted(good)), 0);
  EXPECT_FALSE(nlohmann::json::parse(output)[0].contains("exact_milliseconds"));
}

TEST_F(Program, DecodeInEveryMode) {
  const std::string input = Quoted(Fixture("sox_pcm16_stereo.wav"));
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
    const char* options;
    const std::vector<short>& samples;
  };
  const Case cases[] = {{"", average},
                        {"--channels 0,1 --mode average ", average},
                        {"--mode sum ", sum},
                        {"--mode separate ", stereo},
                        {"--channels 1 ", right},
                        {"--channels 1 --mode separate ", right},
                        {"--mode separate --channels 1,0 ", stereo},  // a full selection
                        {"--reader \"Portable WAV Format\" ", average}};
  const std::string raw = directory.File("x.raw");
  for (const Case& c : cases) {
    EXPECT_EQ(Run(std::string("decode ") + c.options + input + "-o" + Quoted(raw)), 0) << errors;
    EXPECT_EQ(tests::ReadSamples(raw), c.samples) << c.options;
    EXPECT_EQ(errors, "");
  }
  EXPECT_EQ(Run("decode --mode separate -o -" + input), 0);
  EXPECT_EQ(tests::ReadSamples(directory.File("out.txt")), stereo) << "to standard output";
}

TEST_F(Program, DecodeRefusals) {
  const std::string input = Fixture("sox_pcm16_stereo.wav");
  const std::string raw = directory.File("x.raw");
  EXPECT_EQ(Run("decode --channels 0,2" + Quoted(input) + "-o" + Quoted(raw)), 1);
  EXPECT_NE(errors.find("609 QVERR_UNSUPPORTED_CHANNELS"), std::string::npos) << errors;
  EXPECT_NE(errors.find("its channels are 0 to 1"), std::string::npos) << errors;
  EXPECT_EQ(Run("decode nowhere.wav -o" + Quoted(raw)), 1);
  EXPECT_FALSE(std::filesystem::exists(raw)) << "nothing is begun for a file that does not open";
  // Never over its own input.
  const std::string copy = directory.File("copy.wav");
  std::filesystem::copy(input, copy);
  EXPECT_EQ(Run("decode" + Quoted(copy) + "-o" + Quoted(copy)), 2);
  EXPECT_EQ(std::filesystem::file_size(copy), std::filesystem::file_size(input));
  EXPECT_EQ(Run("decode" + Quoted(input) + "-o" + Quoted(directory.File("no/such/x.raw"))), 1);
  EXPECT_NE(errors.find("cannot be written: No such file"), std::string::npos) << errors;
}

TEST_F(Program, AFullDiskAndAClosedPipeAreReported) {
  const std::string input = Quoted(Fixture("sox_pcm16_stereo.wav"));
  EXPECT_EQ(Run("decode -o /dev/full" + input), 1);
  EXPECT_NE(errors.find("/dev/full: cannot be written: No space left"), std::string::npos)
      << errors;
  for (const std::string& arguments :
       {"info" + input, std::string("--help"), std::string("info --help"), std::string("--version"),
        std::string("formats")}) {
    EXPECT_EQ(Run(arguments, "/dev/full"), 1) << arguments;
    EXPECT_NE(errors.find("standard output: cannot be written: No space left"), std::string::npos)
        << arguments;
  }
  // The reading end is gone before the first write.
  const std::string command = "{ sleep 0.2; \"" + std::string(MEDIA_ACCESSOR_PROGRAM) +
                              "\" decode -o -" + input + "2> \"" + directory.File("pipe.txt") +
                              "\"; echo $? > \"" + directory.File("code.txt") + "\"; } | true";
  std::system(command.c_str());
  EXPECT_EQ(Text(directory.File("code.txt")), "1\n");
  EXPECT_NE(
      Text(directory.File("pipe.txt")).find("standard output: cannot be written: Broken pipe"),
      std::string::npos);
}

TEST_F(Program, WrongUsage) {
  const std::string input = Quoted(Fixture("sox_pcm16_stereo.wav"));
  for (const std::string& arguments :
       {std::string(""), std::string("unknown"), std::string("info"), "decode" + input,
        "decode -o - --mode loud" + input, "decode -o - --channels x" + input,
        "decode -o - --channels=-1" + input, "decode -o - --channels 0,," + input,
        "decode -o - --channels 0x1" + input, "info --reader ''" + input,
        "info --reader nobody" + input, "decode -o - --reader nobody" + input}) {
    EXPECT_EQ(Run(arguments), 2) << arguments;
    EXPECT_EQ(output, "") << arguments;
    EXPECT_NE(errors, "") << arguments;
  }
  EXPECT_EQ(Run("--help"), 0);
  EXPECT_EQ(Run("decode --help"), 0);
  EXPECT_NE(output.find("a full\n"), std::string::npos) << "the rule for a full selection";
  EXPECT_EQ(Run("--version"), 0);
  EXPECT_EQ(output, "media-accessor 9.0.0.288 (185833).288\n");
}

TEST_F(Program, Formats) {
  EXPECT_EQ(Run("formats"), 0);
  EXPECT_NE(output.find("wav        Portable WAV Format\n"), std::string::npos) << output;
  EXPECT_EQ(Run("formats --json"), 0);
  EXPECT_EQ(
      nlohmann::json::parse(output),
      nlohmann::json::parse(R"([{"extension": "wav", "candidates": ["Portable WAV Format"]}])"));
}

}  // namespace
