// The sink of a speech coder: counts the whole frames of a push, and refuses it when told to.
#pragma once

#include <MediaAccessor/media_sink.h>

#include <cstdint>

#include "fuzz/fuzz_input.h"

namespace fuzz {

/// @tparam Element  what the coder counts.
template <class Element>
struct FrameSink : Quorvex::CMediaSink {
  Quorvex::QVERRORCODE_TAG SetChannelCount(int) override { return Quorvex::QVERR_OK; }
  Quorvex::QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    Require(count > 0 && count % frame == 0);
    frames += count / frame;
    const auto* const elements = static_cast<const Element*>(data);
    for (unsigned long i = 0; i < count; ++i) sum = sum + elements[i];  // every one is there
    return refuses ? Quorvex::QVERR_FILE_IO : Quorvex::QVERR_OK;
  }

  unsigned long frame = 0;  // elements of one
  std::uint64_t frames = 0;
  bool refuses = false;
  volatile int sum = 0;
};

}  // namespace fuzz
