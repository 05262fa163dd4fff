// A speech codec engine as its users drive it: its information, and a coder in banks of its own.
#pragma once

#include <cstring>
#include <memory>
#include <vector>

#include "codecs/engine.h"

namespace tests {

/// Bytes of exactly that size, so that a sanitizer sees each step beyond.
using Block = std::unique_ptr<unsigned char[]>;

inline Block MakeBlock(std::size_t bytes, unsigned char fill) {
  Block block(new unsigned char[bytes]);
  if (bytes > 0) std::memset(block.get(), fill, bytes);
  return block;
}

/// What an engine says of itself.
class EngineInfoBlock {
 public:
  explicit EngineInfoBlock(const Quorvex::SpeechEngine& engine)
      : block_(MakeBlock(engine.InfoBytes(), 0xFF)) {
    engine.Info(info());
  }
  const Quorvex::EngineInfo* operator->() const { return info(); }
  std::size_t PCMSamples() const { return static_cast<std::size_t>(info()->pcmFrameBytes) / 2; }
  std::size_t MostStreamBytes() const { return static_cast<std::size_t>(info()->mostStreamBytes); }

 private:
  Quorvex::EngineInfo* info() const {
    return static_cast<Quorvex::EngineInfo*>(static_cast<void*>(block_.get()));
  }
  Block block_;
};

/// A coder and its memory.
class EngineCoder {
 public:
  /// @param fill  what the memory holds before.
  EngineCoder(const Quorvex::SpeechEngine& engine, const Quorvex::EngineOptions& options,
              unsigned char fill)
      : engine_(&engine), banks_(static_cast<std::size_t>(engine.BankCount(options))) {
    engine.BankSizes(options, banks_.data());
    for (Quorvex::MemoryBank& bank : banks_) {
      memory_.push_back(MakeBlock(bank.bytes, fill));
      bank.memory = memory_.back().get();
    }
    status_ = engine.Initialize(options, banks_.data(), &handle_);
  }

  /// Of the initialisation. The other operations are for a coder for which it is kOk.
  Quorvex::EngineStatus Status() const { return status_; }
  Quorvex::EngineHandle* Handle() const { return handle_; }

  Quorvex::EngineStatus Decode(const Quorvex::CodedFrame& frame, short* samples) const {
    return engine_->Decode(handle_, frame, samples);
  }
  Quorvex::EngineStatus Encode(const short* samples, unsigned char* data,
                               std::size_t& bytes) const {
    return engine_->Encode(handle_, samples, data, &bytes);
  }

 private:
  const Quorvex::SpeechEngine* engine_;
  std::vector<Quorvex::MemoryBank> banks_;
  std::vector<Block> memory_;
  Quorvex::EngineHandle* handle_ = nullptr;
  Quorvex::EngineStatus status_;
};

}  // namespace tests
