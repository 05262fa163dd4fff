// The peers of the resampling accessor.
#include "benchmarks/resampling_peers.h"

#include <samplerate.h>
#include <soxr.h>
#include <speex/speex_resampler.h>
#include <zita-resampler/resampler.h>
extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace benchmarks {
namespace {

soxr_t CreateSoxr(const Conversion& conversion, unsigned long recipe) {
  soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
  io.flags = SOXR_NO_DITHER;
  const soxr_quality_spec_t quality = soxr_quality_spec(recipe, 0);
  const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  return soxr_create(conversion.input, conversion.output, conversion.channels, nullptr, &io,
                     &quality, &runtime);
}

// So that the compiler can use vectors.
void RoundToShort(std::span<const float> samples, short* output) {
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const float rounded = samples[i] + (samples[i] < 0 ? -0.5F : 0.5F);
    output[i] = static_cast<short>(std::clamp(rounded, -32768.0F, 32767.0F));
  }
}

}  // namespace

Converter MakeSoxr(const Conversion& conversion, unsigned long recipe) {
  const std::shared_ptr<soxr> state(CreateSoxr(conversion, recipe), soxr_delete);
  return [state, channels = conversion.channels](std::span<const short> input,
                                                 std::span<short> output) {
    std::size_t done = 0;
    soxr_process(state.get(), input.empty() ? nullptr : input.data(), input.size() / channels,
                 nullptr, output.data(), output.size() / channels, &done);
    return done;
  };
}

bool SetUpSoxr(const Conversion& conversion, unsigned long recipe) {
  const soxr_t state = CreateSoxr(conversion, recipe);
  soxr_delete(state);
  return state != nullptr;
}

Converter MakeSpeex(const Conversion& conversion) {
  constexpr int kQuality = 5;
  const std::shared_ptr<SpeexResamplerState> state(
      speex_resampler_init(conversion.channels, conversion.input, conversion.output, kQuality,
                           nullptr),
      speex_resampler_destroy);
  return [state, channels = conversion.channels](std::span<const short> input,
                                                 std::span<short> output) -> std::size_t {
    auto taken = static_cast<spx_uint32_t>(input.size() / channels);
    auto made = static_cast<spx_uint32_t>(output.size() / channels);
    speex_resampler_process_interleaved_int(state.get(), input.data(), &taken, output.data(),
                                            &made);
    return made;
  };
}

Converter MakeZita(const Conversion& conversion) {
  constexpr unsigned kHalfLength = 32;
  const auto state = std::make_shared<Resampler>();
  state->setup(conversion.input, conversion.output, conversion.channels, kHalfLength);
  const auto in = std::make_shared<std::vector<float>>();
  const auto out = std::make_shared<std::vector<float>>();
  return [=, channels = conversion.channels](std::span<const short> input,
                                             std::span<short> output) -> std::size_t {
    in->assign(input.begin(), input.end());
    if (out->size() < output.size()) out->resize(output.size());
    const auto room = static_cast<unsigned>(output.size() / channels);
    state->inp_count = static_cast<unsigned>(input.size() / channels);
    state->inp_data = in->data();
    state->out_count = room;
    state->out_data = out->data();
    state->process();
    const std::size_t made = room - state->out_count;
    RoundToShort({out->data(), made * channels}, output.data());
    return made;
  };
}

Converter MakeSamplerate(const Conversion& conversion) {
  int error = 0;
  const std::shared_ptr<SRC_STATE> state(
      src_new(SRC_SINC_MEDIUM_QUALITY, static_cast<int>(conversion.channels), &error), src_delete);
  const auto in = std::make_shared<std::vector<float>>();
  const auto out = std::make_shared<std::vector<float>>();
  return [=](std::span<const short> input, std::span<short> output) -> std::size_t {
    if (in->size() < input.size()) in->resize(input.size());
    if (out->size() < output.size()) out->resize(output.size());
    src_short_to_float_array(input.data(), in->data(), static_cast<int>(input.size()));
    SRC_DATA data{};
    data.data_in = in->data();
    data.input_frames = static_cast<long>(input.size() / conversion.channels);
    data.data_out = out->data();
    data.output_frames = static_cast<long>(output.size() / conversion.channels);
    data.src_ratio = static_cast<double>(conversion.output) / conversion.input;
    if (src_process(state.get(), &data) != 0) return 0;
    const long made = data.output_frames_gen;
    src_float_to_short_array(out->data(), output.data(),
                             static_cast<int>(made * static_cast<long>(conversion.channels)));
    return static_cast<std::size_t>(made);
  };
}

Converter MakeSwresample(const Conversion& conversion) {
  AVChannelLayout layout{};
  av_channel_layout_default(&layout, static_cast<int>(conversion.channels));
  SwrContext* context = nullptr;
  swr_alloc_set_opts2(&context, &layout, AV_SAMPLE_FMT_S16, static_cast<int>(conversion.output),
                      &layout, AV_SAMPLE_FMT_S16, static_cast<int>(conversion.input), 0, nullptr);
  const std::shared_ptr<SwrContext> state(context, [](SwrContext* each) { swr_free(&each); });
  swr_init(context);
  return [state, channels = conversion.channels](std::span<const short> input,
                                                 std::span<short> output) -> std::size_t {
    const auto* from = reinterpret_cast<const std::uint8_t*>(input.data());
    auto* to = reinterpret_cast<std::uint8_t*>(output.data());
    const int made = swr_convert(state.get(), &to, static_cast<int>(output.size() / channels),
                                 &from, static_cast<int>(input.size() / channels));
    return made > 0 ? static_cast<std::size_t>(made) : 0;
  };
}

}  // namespace benchmarks
