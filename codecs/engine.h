// What a speech codec engine offers: one table of functions a codec.
//
// An engine allocates nothing. Whoever uses it asks how many banks of memory it needs and of what
// size, supplies them, and has it make its handle there:
//
//     InfoBytes, Info                what the codec is
//     BankCount, BankSizes           what memory a coder needs
//     Initialize                     makes the coder in that memory
//     Decode or Encode               a frame at a time
//     Control                        other modes from the next frame on
//     Reinitialize                   back to the beginning of a stream
//
// A coder holds no resource: to end it is to free its banks.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace Quorvex {

enum class EngineStatus : int {
  kOk = 0,
  kBadArgument,   ///< a bit rate, direction or handle that the engine cannot take
  kNotSupported,  ///< the engine has no such direction or companding law
  kBadFrame,      ///< a coded frame of a wrong size
};

enum class EngineDirection : int { kEncode, kDecode };

/// How PCM is companded.
enum class EngineLaw : int { kLinear = 0, kALaw, kMuLaw };

/// What may change from one frame to the next. A codec ignores the switches that it does not have.
struct EngineModes {
  int bitRate = 0;                      ///< bit/s, one of the codec's
  bool voiceActivityDetection = false;  ///< of an encoder: shorter frames for silence
  bool highPass = true;                 ///< of an encoder: its input filter
  bool postFilter = true;               ///< of a decoder
};

struct EngineOptions {
  EngineDirection direction = EngineDirection::kDecode;
  EngineLaw law = EngineLaw::kLinear;
  EngineModes modes;
};

/// What a codec is. The block that holds it has InfoBytes() bytes: the bit rates follow.
struct EngineInfo {
  const char* name;       ///< static, the table's
  int samplingFrequency;  ///< Hz
  int bitsPerSample;      ///< of PCM
  int pcmFrameBytes;      ///< PCM of one frame
  int mostStreamBytes;    ///< the largest coded frame
  int bitRateCount;

  /// Length of a coded frame at a bit rate: that of a frame's samples, rounded up to whole bytes.
  constexpr std::size_t FrameBytes(int bitRate) const noexcept {
    const long long samples = pcmFrameBytes / (bitsPerSample / 8);
    const long long bits = samples * bitRate;
    const long long bitsOfByte = 8LL * samplingFrequency;
    return static_cast<std::size_t>((bits + bitsOfByte - 1) / bitsOfByte);
  }
  /// bit/s, in rising order.
  std::span<const int> BitRates() const noexcept {
    return {reinterpret_cast<const int*>(this + 1), static_cast<std::size_t>(bitRateCount)};
  }
};

/// Memory that a coder works in.
struct MemoryBank {
  void* memory = nullptr;     ///< the user's
  std::size_t alignment = 0;  ///< in bytes, the engine's wish; at most that of std::max_align_t
  std::size_t bytes = 0;      ///< the engine's wish
};

/// One coded frame on its way in.
struct CodedFrame {
  const unsigned char* data = nullptr;
  std::size_t bytes = 0;
  bool isErased = false;  ///< lost on the way: `data` is not looked at
};

/// A coder, in its banks.
struct EngineHandle;

struct SpeechEngine {
  const char* name;  ///< of the codec, such as "IPP_G722"

  /// Size of the block that Info fills; it is aligned as EngineInfo is.
  std::size_t (*InfoBytes)() noexcept;
  void (*Info)(EngineInfo* info) noexcept;

  int (*BankCount)(const EngineOptions& options) noexcept;
  /// Fills in alignment and size of so many banks.
  void (*BankSizes)(const EngineOptions& options, MemoryBank* banks) noexcept;

  /// Makes a coder in banks of the sizes that were asked for.
  /// @param handle  receives it, valid as long as the banks; null on failure.
  /// @return kOk; kBadArgument for a bit rate that the codec does not have; kNotSupported.
  EngineStatus (*Initialize)(const EngineOptions& options, const MemoryBank* banks,
                             EngineHandle** handle) noexcept;
  /// Forgets the stream so far and sets the modes. @return kOk; kBadArgument.
  EngineStatus (*Reinitialize)(const EngineModes& modes, EngineHandle* handle) noexcept;
  /// Sets the modes, within the stream. @return kOk; kBadArgument.
  EngineStatus (*Control)(const EngineModes& modes, EngineHandle* handle) noexcept;

  /// Codes one frame of PCM.
  /// @param samples  one frame: pcmFrameBytes bytes.
  /// @param data     receives the frame; has room for mostStreamBytes.
  /// @param bytes    receives the frame's size.
  /// @return kOk; kBadArgument for a handle of a decoder.
  EngineStatus (*Encode)(EngineHandle* handle, const short* samples, unsigned char* data,
                         std::size_t* bytes) noexcept;
  /// Decodes one frame.
  /// @param samples  receives pcmFrameBytes of PCM, on kOk only.
  /// @return kOk; kBadFrame for a size that no frame of this bit rate has; kBadArgument for
  ///         a handle of an encoder.
  EngineStatus (*Decode)(EngineHandle* handle, const CodedFrame& frame, short* samples) noexcept;

  /// Bytes that come out of so many whole frames: PCM of a decoder, the coded frames of an encoder.
  /// 0 for a bit rate that the codec does not have.
  std::size_t (*OutputBytes)(const EngineOptions& options, std::size_t inputBytes) noexcept;
  /// Bytes of the coded frame that begins with `firstByte`, which tells where frames differ.
  std::size_t (*FrameBytes)(int bitRate, unsigned char firstByte) noexcept;
};

/// The engine of a codec; null, with a line in the log, when there is none in this build.
const SpeechEngine* FindSpeechEngine(std::string_view name) noexcept;

/// Tells in the log why a codec is refused. @param bitRate  in bit/s, where it matters; else 0.
void LogRefusal(std::string_view codec, const wchar_t* why, long bitRate = 0) noexcept;

}  // namespace Quorvex
