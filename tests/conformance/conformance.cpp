// Runs the speech codec engines over a folder of conformance vectors: every coder starts anew, and
// has to make what is expected sample for sample or byte for byte.
//
//     conformance DIR    DIR/VECTORS.tsv lists the vectors
//
// Exit code 0: those that have an engine are exact. 1: some differ or could not be run, or none
// could be.
#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "tests/conformance/streams.h"
#include "tests/engine_coder.h"

namespace {

using namespace conformance;
using Quorvex::EngineStatus;
using Quorvex::SpeechEngine;

struct Verdict {
  enum Kind { kExact, kDiffers, kNoEngine, kNotRun };
  static constexpr const char* kWords[] = {"exact", "differs", "no engine", "not run"};
  static constexpr int kKinds = 4;

  Kind kind;
  std::string details;
};

/// @param unit  what the values are.
template <class Value>
Verdict Compare(const char* unit, const std::vector<Value>& made,
                const std::vector<Value>& expected) {
  const auto common = std::min(made.size(), expected.size());
  std::size_t first = common;
  std::size_t differing = 0;
  for (std::size_t i = common; i-- > 0;) {
    if (made[i] == expected[i]) continue;
    first = i;
    ++differing;
  }
  std::ostringstream text;
  if (differing > 0) {
    text << unit << " " << first << " is " << made[first] << " instead of " << expected[first]
         << ", " << differing << " of " << common << " differ; ";
  }
  if (made.size() != expected.size()) {
    text << made.size() << " " << unit << "s instead of " << expected.size() << "; ";
  }
  std::string details = text.str();
  if (details.empty()) return {Verdict::kExact, {}};
  details.resize(details.size() - 2);
  return {Verdict::kDiffers, details};
}

void RequireOk(EngineStatus status, const std::string& what) {
  if (status == EngineStatus::kOk) return;
  throw std::runtime_error(what + ": the engine's status is " +
                           std::to_string(static_cast<int>(status)));
}

Verdict Decode(const std::filesystem::path& folder, const Vector& vector,
               const SpeechEngine& engine, const tests::EngineCoder& coder,
               std::size_t frameSamples) {
  const auto frames = ReadFrames(folder, vector, engine, frameSamples);
  const auto expected = ReadExpectedPCM(folder, vector);
  std::vector<short> made(frames.size() * frameSamples);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    Quorvex::CodedFrame frame;
    if (frames[i].isErased) {
      frame.isErased = true;
    } else {
      frame.data = frames[i].data.data();
      frame.bytes = frames[i].data.size();
    }
    RequireOk(coder.Decode(frame, &made[i * frameSamples]), "frame " + std::to_string(i));
  }
  // The last frame of G.722 may be longer than the vector.
  made.resize(std::min(made.size(), expected.size()));
  return Compare("sample", made, expected);
}

Verdict Encode(const std::filesystem::path& folder, const Vector& vector,
               const tests::EngineCoder& coder, const tests::EngineInfoBlock& info) {
  const std::size_t frameSamples = info.PCMSamples();
  const auto samples = ReadInputPCM(folder, vector, frameSamples);
  const Bytes expected = ReadExpectedBytes(folder, vector);
  Bytes made;
  Bytes frame(info.MostStreamBytes());
  for (std::size_t i = 0; i < samples.size(); i += frameSamples) {
    std::size_t bytes = 0;
    const std::string name = "frame " + std::to_string(i / frameSamples);
    RequireOk(coder.Encode(&samples[i], frame.data(), bytes), name);
    if (bytes > frame.size()) throw std::runtime_error(name + " has more bytes than it may have");
    made.insert(made.end(), frame.data(), frame.data() + bytes);
  }
  const Bytes file = FileOfFrames(vector, made);
  // As numbers, not characters.
  return Compare("byte", std::vector<int>(file.begin(), file.end()),
                 std::vector<int>(expected.begin(), expected.end()));
}

/// The name of the engine's table. @throw std::runtime_error for another codec.
std::string EngineName(const std::string& codec) {
  for (const char* known : {"G.729A", "G.723.1", "G.722", "G.722.1"}) {
    if (codec == known) return "IPP_G" + codec.substr(2);
  }
  throw std::runtime_error("unknown codec");
}

Verdict Run(const std::filesystem::path& folder, const Vector& vector) {
  const SpeechEngine* engine = Quorvex::FindSpeechEngine(EngineName(vector.codec));
  if (engine == nullptr) return {Verdict::kNoEngine, {}};
  const tests::EngineInfoBlock info(*engine);
  const std::size_t frameSamples = info.PCMSamples();
  const bool fits = vector.IsOfCodeWords() ? frameSamples % vector.pcmPerFrame == 0
                                           : frameSamples == vector.pcmPerFrame;
  if (!fits) {
    throw std::runtime_error("the engine's frame has " + std::to_string(frameSamples) + " samples");
  }
  const tests::EngineCoder coder(*engine, vector.options, 0xFF);
  RequireOk(coder.Status(), "start");
  return vector.IsDecoded() ? Decode(folder, vector, *engine, coder, frameSamples)
                            : Encode(folder, vector, coder, info);
}

/// The verdict on one line of the table, printed.
Verdict::Kind Judge(const std::filesystem::path& folder, const std::string& line) {
  Verdict verdict{Verdict::kNotRun, {}};
  try {
    verdict = Run(folder, ParseVector(line));
  } catch (const std::exception& error) {
    verdict.details = error.what();
  }
  // Codec, direction, mode and input.
  std::istringstream fields(line);
  std::string name;
  for (int i = 0; i < 4; ++i) {
    std::string field;
    std::getline(fields, field, '\t');
    name += " " + field;
  }
  if (!verdict.details.empty()) name += ": " + verdict.details;
  std::printf("%-10s%s\n", Verdict::kWords[verdict.kind], name.c_str());
  return verdict.kind;
}

int RunAll(const std::filesystem::path& folder) {
  const Bytes table = ReadFile(folder / "VECTORS.tsv");
  std::istringstream lines(std::string(table.begin(), table.end()));
  std::string line;
  std::getline(lines, line);
  if (line != kColumns) throw std::runtime_error("VECTORS.tsv has other columns");
  int counts[Verdict::kKinds] = {};
  while (std::getline(lines, line)) ++counts[Judge(folder, line)];

  std::printf("%d exact, %d differ, %d without an engine, %d not run\n", counts[Verdict::kExact],
              counts[Verdict::kDiffers], counts[Verdict::kNoEngine], counts[Verdict::kNotRun]);
  const bool allExact = counts[Verdict::kDiffers] == 0 && counts[Verdict::kNotRun] == 0;
  return allExact && counts[Verdict::kExact] > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: conformance DIR\n", stderr);
    return 2;
  }
  try {
    return RunAll(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "conformance: %s\n", error.what());
    return 1;
  }
}
