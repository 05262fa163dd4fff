// Streams of a vector, taken apart into frames and put together.
#include "tests/conformance/streams.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>

namespace conformance {
namespace {

using std::filesystem::path;

/// Two samples a code word: 8,000 of them a second.
constexpr int kCodeWordsPerSecond = 8000;

unsigned CodeWordBits(const Vector& vector) {
  const int bits = vector.options.modes.bitRate / kCodeWordsPerSecond;
  if (bits < 1 || bits > 8) throw std::runtime_error("a code word has no such number of bits");
  return static_cast<unsigned>(bits);
}

Bytes PackCodeWords(std::span<const unsigned char> words, unsigned bits) {
  Bytes packed((words.size() * bits + 7) / 8);
  for (std::size_t i = 0; i < words.size() * bits; ++i) {
    const unsigned bit = words[i / bits] >> (i % bits) & 1;
    packed[i / 8] = static_cast<unsigned char>(packed[i / 8] | bit << (i % 8));
  }
  return packed;
}

Bytes UnpackCodeWords(const Bytes& packed, unsigned bits) {
  Bytes words(packed.size() * 8 / bits);
  for (std::size_t i = 0; i < words.size() * bits; ++i) {
    const unsigned bit = packed[i / 8] >> (i % 8) & 1;
    words[i / bits] = static_cast<unsigned char>(words[i / bits] | bit << (i % bits));
  }
  return words;
}

std::vector<Frame> ReadCodeWordFrames(const path& file, const Vector& vector,
                                      std::size_t frameSamples) {
  const unsigned bits = CodeWordBits(vector);
  Bytes words = ReadFile(file, vector.frames);
  for (unsigned char& word : words) {
    word = static_cast<unsigned char>(word >> vector.droppedBits);
    if (word >> bits != 0) throw std::runtime_error(file.string() + " has wider code words");
  }
  const std::size_t frameWords = frameSamples / vector.pcmPerFrame;
  words.resize((words.size() + frameWords - 1) / frameWords * frameWords);
  std::vector<Frame> frames;
  for (std::size_t i = 0; i < words.size(); i += frameWords) {
    frames.push_back({PackCodeWords(std::span(words).subspan(i, frameWords), bits)});
  }
  return frames;
}

std::vector<Frame> ReadPlainFrames(const path& file, const Vector& vector,
                                   const Quorvex::SpeechEngine& engine) {
  const Bytes bytes = ReadFile(file);
  const std::size_t header = vector.skipsFirstByte ? 1 : 0;
  std::vector<Frame> frames;
  std::span<const unsigned char> rest(bytes);
  while (!rest.empty() && frames.size() < vector.frames) {
    std::size_t size = vector.frameBytes;
    if (size == 0) size = engine.FrameBytes(vector.options.modes.bitRate, rest.front());
    if (size <= header || size > rest.size()) break;
    const auto data = rest.subspan(header, size - header);
    frames.push_back({Bytes(data.begin(), data.end())});
    rest = rest.subspan(size);
  }
  if (frames.size() != vector.frames || !rest.empty()) {
    throw std::runtime_error(file.string() + " has " + std::to_string(frames.size()) +
                             " frames instead of " + std::to_string(vector.frames) + ", and " +
                             std::to_string(rest.size()) + " bytes behind them");
  }
  return frames;
}

/// A byte a frame; a 16-bit word in a file called .crc.
void ReadErasures(const path& file, std::vector<Frame>& frames) {
  const std::size_t width = file.extension() == ".crc" ? 2 : 1;
  const Bytes flags = ReadFile(file, frames.size() * width);
  for (std::size_t i = 0; i < flags.size(); ++i) {
    if (flags[i] != 0) frames[i / width].isErased = true;
  }
}

std::vector<short> ToSamples(const Bytes& bytes, std::size_t count) {
  std::vector<short> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    samples[i] = static_cast<short>(bytes[2 * i] | bytes[2 * i + 1] << 8);
  }
  return samples;
}

}  // namespace

std::vector<Frame> ReadFrames(const path& folder, const Vector& vector,
                              const Quorvex::SpeechEngine& engine, std::size_t frameSamples) {
  std::vector<Frame> frames = vector.IsOfCodeWords()
                                  ? ReadCodeWordFrames(folder / vector.input, vector, frameSamples)
                                  : ReadPlainFrames(folder / vector.input, vector, engine);
  if (!vector.erasureFlags.empty()) ReadErasures(folder / vector.erasureFlags, frames);
  return frames;
}

std::vector<short> ReadInputPCM(const path& folder, const Vector& vector,
                                std::size_t frameSamples) {
  const path file = folder / vector.input;
  const Bytes bytes = ReadFile(file);
  if (bytes.size() / 2 / vector.pcmPerFrame != vector.frames || bytes.size() % 2 != 0) {
    throw std::runtime_error(file.string() + " has " + std::to_string(bytes.size()) +
                             " bytes, which are not " + std::to_string(vector.frames) + " frames");
  }
  // What is left over behind the last whole frame is not coded.
  std::vector<short> samples = ToSamples(bytes, vector.Samples());
  samples.resize((samples.size() + frameSamples - 1) / frameSamples * frameSamples);
  return samples;
}

Bytes ReadExpectedBytes(const path& folder, const Vector& vector) {
  const path file = folder / vector.expected;
  if (vector.frameBytes == 0) return ReadFile(file);
  return ReadFile(file, vector.frames * vector.frameBytes);
}

std::vector<short> ReadExpectedPCM(const path& folder, const Vector& vector) {
  return ToSamples(ReadFile(folder / vector.expected, vector.Samples() * 2), vector.Samples());
}

Bytes FileOfFrames(const Vector& vector, const Bytes& frames) {
  if (!vector.IsOfCodeWords()) return frames;
  Bytes words = UnpackCodeWords(frames, CodeWordBits(vector));
  // Those of the zeros behind the last sample.
  words.resize(std::min(words.size(), vector.frames));
  return words;
}

}  // namespace conformance
