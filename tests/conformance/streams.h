// The files of a vector as an engine takes and gives them: coded frames, and PCM.
//
// The frames of most codecs stand in their file as they are. Those of G.722 have no counterpart
// there: it holds one code word an octet. The engine's frame has as many as fit its samples, packed
// without gaps, lowest bit first.
#pragma once

#include <filesystem>
#include <vector>

#include "tests/conformance/vector.h"

namespace conformance {

struct Frame {
  Bytes data;
  bool isErased = false;
};

/// The coded frames of a vector that is to be decoded; the last one of G.722 ends with zeros.
/// @param frameSamples  of the engine.
/// @throw std::runtime_error naming the file that is not as the vector says.
std::vector<Frame> ReadFrames(const std::filesystem::path& folder, const Vector& vector,
                              const Quorvex::SpeechEngine& engine, std::size_t frameSamples);

/// The PCM that is to be encoded: whole frames of the engine, of which the last one of G.722 ends
/// with zeros.
std::vector<short> ReadInputPCM(const std::filesystem::path& folder, const Vector& vector,
                                std::size_t frameSamples);

/// The bytes that an encoder has to make.
Bytes ReadExpectedBytes(const std::filesystem::path& folder, const Vector& vector);

/// The samples that a decoder has to make.
std::vector<short> ReadExpectedPCM(const std::filesystem::path& folder, const Vector& vector);

/// What an encoder made, as it would stand in the vector's file.
Bytes FileOfFrames(const Vector& vector, const Bytes& frames);

}  // namespace conformance
