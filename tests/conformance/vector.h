// One line of VECTORS.tsv: a stream, and what an engine has to make of it.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/engine.h"

namespace conformance {

using Bytes = std::vector<unsigned char>;

/// The first line of the table.
inline constexpr std::string_view kColumns =
    "codec\tdirection\tmode\tinput\tframe_bytes\tframes\tpcm_per_frame\texpected\toptions\tnotes";

struct Vector {
  std::string codec;  ///< as it is called in the table, such as "G.722"
  std::string input;  ///< this and the other files are relative to the table's folder
  std::string expected;
  std::string erasureFlags;     ///< a file, or empty
  std::size_t frameBytes = 0;   ///< 0: they vary
  std::size_t frames = 0;       ///< of the table; G.722 counts code words
  std::size_t pcmPerFrame = 0;  ///< samples
  Quorvex::EngineOptions options;
  bool skipsFirstByte = false;  ///< of each coded frame
  unsigned droppedBits = 0;     ///< of each octet of G.722, at its low end

  bool IsDecoded() const { return options.direction == Quorvex::EngineDirection::kDecode; }
  bool IsOfCodeWords() const { return codec == "G.722"; }
  std::size_t Samples() const { return frames * pcmPerFrame; }
};

/// @throw std::runtime_error for a line that is not understood whole.
Vector ParseVector(std::string_view line);

/// A whole file. @throw std::runtime_error when it cannot be read.
Bytes ReadFile(const std::filesystem::path& path);

/// The same, of so many bytes. @throw std::runtime_error when it has others.
Bytes ReadFile(const std::filesystem::path& path, std::size_t bytes);

}  // namespace conformance
