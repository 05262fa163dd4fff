// The fuzzer's bytes as the life of one decoder, and of one encoder where the codec has it: of a
// speech codec engine, driven as its table says.
//
//     modes step...        modes: see TakeModes; steps: see Step
//
// Everything is done by two coders in memory of different contents, which have to agree in every
// byte: what was not initialised, or left unwritten in the output, is seen in that.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "fuzz/fuzz_input.h"
#include "tests/engine_coder.h"

namespace fuzz {

using Quorvex::EngineDirection;
using Quorvex::EngineModes;
using Quorvex::EngineOptions;
using Quorvex::EngineStatus;

class EngineRun {
 public:
  EngineRun(const Quorvex::SpeechEngine& engine, Input& input)
      : engine_(engine), info_(engine), input_(input), modes_(TakeModes()) {
    CheckRefusals();
    CheckOutputBytes();
    Start(decoders_, EngineDirection::kDecode);
    if (HasEncoder()) Start(encoders_, EngineDirection::kEncode);
  }

  /// A frame of PCM that is coded and decoded. @return as Step.
  bool CodeStep() {
    Require(encoders_[0].has_value());
    if (input_.Rest().empty()) return false;
    CodeAndDecode();
    return true;
  }

  /// The same, now and then in other modes from there on:
  ///
  ///     switch8 modes8 sample16...      switch: below 224 the modes stay as they are
  bool SwitchAndCodeStep() {
    if (input_.Rest().empty()) return false;
    const bool isSwitched = input_.Take<std::uint8_t>() >= 224;
    const EngineModes modes = TakeModes();
    if (isSwitched) SetModes(modes);
    CodeAndDecode();
    return true;
  }

  /// A coded frame of any or of the right size, an erased one, another bit rate, another stream, or
  /// a frame of PCM that is coded and decoded. @return false at the end of the input.
  bool Step() {
    if (input_.Rest().empty()) return false;
    const unsigned step = input_.Take<std::uint8_t>();
    switch (step % 8) {
      case 0:
        Decode(input_.TakeBytes(input_.Take<std::uint8_t>()), step >= 128);
        break;
      case 1:
        SetModes(TakeModes());
        break;
      case 2:
        Restart(TakeModes());
        break;
      case 3:
      case 4:
        if (encoders_[0]) CodeAndDecode();
        break;
      default:
        DecodeWhole();
    }
    return true;
  }

 private:
  using Coder = tests::EngineCoder;
  using Pair = std::optional<Coder>[2];
  /// What memory holds before it is written to.
  static constexpr unsigned char kFills[] = {0x00, 0xA5};

  /// rate4 switches4: a bit rate of the codec, and the modes' switches.
  EngineModes TakeModes() {
    const unsigned bits = input_.Take<std::uint8_t>();
    const auto rates = info_->BitRates();
    Require(!rates.empty());
    return {.bitRate = rates[bits % 16 % rates.size()],
            .voiceActivityDetection = (bits & 0x10) != 0,
            .highPass = (bits & 0x20) != 0,
            .postFilter = (bits & 0x40) != 0};
  }

  EngineOptions Options(EngineDirection direction) const {
    return {.direction = direction, .law = Quorvex::EngineLaw::kLinear, .modes = modes_};
  }

  void CheckRefusals() {
    EngineOptions options = Options(EngineDirection::kDecode);
    options.law = Quorvex::EngineLaw::kMuLaw;
    const Coder companded(engine_, options, 0);
    Require(companded.Status() == EngineStatus::kNotSupported && companded.Handle() == nullptr);

    options = Options(EngineDirection::kDecode);
    options.modes.bitRate = input_.Take<std::uint16_t>();
    const auto rates = info_->BitRates();
    if (std::ranges::find(rates, options.modes.bitRate) != rates.end()) return;
    const Coder other(engine_, options, 0);
    Require(other.Status() == EngineStatus::kBadArgument && other.Handle() == nullptr);
    Require(engine_.OutputBytes(options, 0xFFFF) == 0);
  }

  /// The last of these frames is not whole.
  void CheckOutputBytes() const {
    const std::size_t coded = info_->FrameBytes(modes_.bitRate);
    const auto pcm = static_cast<std::size_t>(info_->pcmFrameBytes);
    Require(engine_.OutputBytes(Options(EngineDirection::kDecode), 4 * coded - 1) == 3 * pcm);
    Require(engine_.OutputBytes(Options(EngineDirection::kEncode), 4 * pcm - 1) == 3 * coded);
  }

  bool HasEncoder() const {
    const Coder trial(engine_, Options(EngineDirection::kEncode), 0);
    const bool isMade = trial.Status() == EngineStatus::kOk;
    Require(isMade || trial.Status() == EngineStatus::kNotSupported);
    Require((trial.Handle() != nullptr) == isMade);
    return isMade;
  }

  void Start(Pair& coders, EngineDirection direction) {
    for (int i = 0; i < 2; ++i) {
      coders[i].emplace(engine_, Options(direction), kFills[i]);
      Require(coders[i]->Status() == EngineStatus::kOk && coders[i]->Handle() != nullptr);
    }
  }

  void SetModes(const EngineModes& modes) {
    modes_ = modes;
    EngineModes impossible = modes;
    impossible.bitRate = -modes.bitRate;
    for (const Pair* pair : {&decoders_, &encoders_}) {
      for (const auto& coder : *pair) {
        if (!coder) continue;
        Require(engine_.Control(modes, coder->Handle()) == EngineStatus::kOk);
        // Which changes nothing: one of the two is not even asked.
        if (&coder != &(*pair)[0]) continue;
        Require(engine_.Control(impossible, coder->Handle()) == EngineStatus::kBadArgument);
      }
    }
  }

  /// One of each two coders begins a new stream, the other is replaced: they still have to agree.
  void Restart(const EngineModes& modes) {
    modes_ = modes;
    const auto restart = [&](Pair& pair, EngineDirection direction) {
      if (!pair[0]) return;
      Require(engine_.Reinitialize(modes, pair[0]->Handle()) == EngineStatus::kOk);
      pair[1].emplace(engine_, Options(direction), kFills[1]);
      Require(pair[1]->Status() == EngineStatus::kOk);
    };
    restart(decoders_, EngineDirection::kDecode);
    restart(encoders_, EngineDirection::kEncode);
  }

  std::size_t FrameBytes(unsigned char firstByte) const {
    const std::size_t bytes = engine_.FrameBytes(modes_.bitRate, firstByte);
    Require(bytes >= 1 && bytes <= info_.MostStreamBytes());
    return bytes;
  }

  /// The right number of bytes; zeros when the input ends before.
  void DecodeWhole() {
    if (input_.Rest().empty()) return;
    const std::size_t bytes = FrameBytes(input_.Rest().front());
    Bytes data = input_.TakeBytes(bytes);
    data.resize(bytes);
    Decode(data, false);
  }

  /// Output and source have exactly the room that they are promised.
  void Decode(const Bytes& data, bool isErased) {
    const std::size_t room = static_cast<std::size_t>(info_->pcmFrameBytes);
    const auto source = tests::MakeBlock(data.size(), 0);
    std::copy(data.begin(), data.end(), source.get());
    const Quorvex::CodedFrame frame{
        .data = data.empty() ? nullptr : source.get(), .bytes = data.size(), .isErased = isErased};
    const bool isWhole = !data.empty() && data.size() == FrameBytes(data.front());
    const EngineStatus expected = isErased || isWhole ? EngineStatus::kOk : EngineStatus::kBadFrame;

    tests::Block pcm[2];
    for (int i = 0; i < 2; ++i) {
      pcm[i] = tests::MakeBlock(room, kFills[i]);
      Require(decoders_[i]->Decode(frame, Samples(pcm[i])) == expected);
    }
    if (expected == EngineStatus::kOk) {
      Require(std::memcmp(pcm[0].get(), pcm[1].get(), room) == 0);
    } else {
      for (int i = 0; i < 2; ++i) {
        Require(std::all_of(pcm[i].get(), pcm[i].get() + room,
                            [i](unsigned char byte) { return byte == kFills[i]; }));
      }
    }
    if (!encoders_[0]) return;
    Require(encoders_[0]->Decode(frame, Samples(pcm[0])) == EngineStatus::kBadArgument);
  }

  void CodeAndDecode() {
    const Bytes bytes = input_.TakeBytes(static_cast<std::size_t>(info_->pcmFrameBytes));
    const auto pcm = tests::MakeBlock(static_cast<std::size_t>(info_->pcmFrameBytes), 0);
    std::copy(bytes.begin(), bytes.end(), pcm.get());
    Bytes coded[2];
    for (int i = 0; i < 2; ++i) {
      const auto room = tests::MakeBlock(info_.MostStreamBytes(), kFills[i]);
      std::size_t size = 0;
      Require(encoders_[i]->Encode(Samples(pcm), room.get(), size) == EngineStatus::kOk);
      Require(size >= 1 && size <= info_.MostStreamBytes() && size == FrameBytes(room[0]));
      coded[i].assign(room.get(), room.get() + size);
      Require(decoders_[i]->Encode(Samples(pcm), room.get(), size) == EngineStatus::kBadArgument);
    }
    Require(coded[0] == coded[1]);
    Decode(coded[0], false);
  }

  static short* Samples(const tests::Block& block) {
    return static_cast<short*>(static_cast<void*>(block.get()));
  }

  const Quorvex::SpeechEngine& engine_;
  const tests::EngineInfoBlock info_;
  Input& input_;
  EngineModes modes_;  // of every coder
  Pair decoders_;
  Pair encoders_;  // empty where the codec has none
};

/// One input of a target.
/// @tparam kStep  what is done as long as there is input.
template <bool (EngineRun::*kStep)() = &EngineRun::Step>
int FuzzEngine(std::string_view name, const std::uint8_t* data, std::size_t size) {
  static const Quorvex::SpeechEngine* const engine = Quorvex::FindSpeechEngine(name);
  Require(engine != nullptr);
  Input input(data, size);
  EngineRun run(*engine, input);
  while ((run.*kStep)()) {
  }
  return 0;
}

}  // namespace fuzz
