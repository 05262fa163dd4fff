// A line of the table of vectors.
#include "tests/conformance/vector.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace conformance {
namespace {

using Quorvex::EngineDirection;

/// No file of vectors is larger; so no product of two numbers overflows.
constexpr int kMostNumber = 1 << 24;

/// The parts of a text between separators; empty ones too.
std::vector<std::string_view> Split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> parts;
  while (true) {
    const std::size_t end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + separator.size());
  }
}

int ParseNumber(std::string_view text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size() || number < 1 ||
      number > kMostNumber) {
    throw std::runtime_error("not a number from 1 on: " + std::string(text));
  }
  return number;
}

EngineDirection ParseDirection(std::string_view text) {
  if (text == "decode") return EngineDirection::kDecode;
  if (text == "encode") return EngineDirection::kEncode;
  throw std::runtime_error("unknown direction: " + std::string(text));
}

/// Every option has to be known: one that is passed over would be a vector of another coder.
void ParseOption(std::string_view option, Vector& vector) {
  constexpr std::string_view kErasureFlags = "erasure flags ";
  // What every coder of these does anyway.
  constexpr std::string_view kAlways[] = {"QMF on",
                                          "6-bit code words in the low bits of each octet",
                                          "two low bits of each output sample cleared"};
  Quorvex::EngineModes& modes = vector.options.modes;
  if (option == "post-filter on" || option == "post-filter off") {
    modes.postFilter = option.ends_with("on");
  } else if (option == "VAD on" || option == "VAD off") {
    modes.voiceActivityDetection = option.ends_with("on");
  } else if (option == "encoder high-pass on" || option == "encoder high-pass on (always)") {
    modes.highPass = true;
  } else if (option == "encoder high-pass off") {
    modes.highPass = false;
  } else if (option == "skip first byte of each frame") {
    vector.skipsFirstByte = true;
  } else if (option == "8-bit octets, the two low bits ignored") {
    vector.droppedBits = 2;
  } else if (option.starts_with(kErasureFlags)) {
    vector.erasureFlags = option.substr(kErasureFlags.size());
  } else if (std::ranges::find(kAlways, option) == std::end(kAlways)) {
    throw std::runtime_error("unknown option: " + std::string(option));
  }
}

}  // namespace

Vector ParseVector(std::string_view line) {
  const auto fields = Split(line, "\t");
  if (fields.size() != Split(kColumns, "\t").size()) {
    throw std::runtime_error("another number of columns");
  }
  Vector vector;
  vector.codec = fields[0];
  vector.options.direction = ParseDirection(fields[1]);
  vector.options.modes.bitRate = ParseNumber(fields[2]);
  vector.input = fields[3];
  if (fields[4] != "varies") vector.frameBytes = static_cast<std::size_t>(ParseNumber(fields[4]));
  vector.frames = static_cast<std::size_t>(ParseNumber(fields[5]));
  vector.pcmPerFrame = static_cast<std::size_t>(ParseNumber(fields[6]));
  vector.expected = fields[7];
  for (const std::string_view option : Split(fields[8], "; ")) ParseOption(option, vector);
  return vector;
}

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error(path.string() + " cannot be read");
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

Bytes ReadFile(const std::filesystem::path& path, std::size_t bytes) {
  Bytes content = ReadFile(path);
  if (content.size() != bytes) {
    throw std::runtime_error(path.string() + " has " + std::to_string(content.size()) +
                             " bytes instead of " + std::to_string(bytes));
  }
  return content;
}

}  // namespace conformance
