// Which decoder, with which parameters: what libavformat's reader of wave files makes of a record.
#include "modules/ffmpeg/wave_record.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <new>

namespace Quorvex::ffmpeg {
namespace {

constexpr std::uint32_t kMostChannels = 64;
constexpr std::size_t kMostExtraBytes = 65'535;
constexpr std::uint32_t kMostBlockAlign = 65'535;
constexpr std::uint32_t kExtensibleTag = 0xFFFE;

}  // namespace

bool MakesSense(const MediaAccessorCoding& coding) noexcept {
  return coding.channels >= 1 && coding.channels <= kMostChannels && coding.samplesPerSecond >= 1 &&
         coding.samplesPerSecond <= INT_MAX && coding.blockAlign <= kMostBlockAlign &&
         coding.bitsPerSample <= 0xFFFF && coding.extraBytes <= kMostExtraBytes;
}

AVCodecID CodecOf(const MediaAccessorCoding& coding) noexcept {
  if (coding.tag == kExtensibleTag) return AV_CODEC_ID_NONE;  // stands for any
  const AVCodecTag* const tables[] = {avformat_get_riff_audio_tags(), nullptr};
  const AVCodecID id = av_codec_get_id(tables, coding.tag);
  // These tags have a codec for each width, and the table knows one.
  if (id == AV_CODEC_ID_PCM_S16LE || id == AV_CODEC_ID_PCM_F32LE) return AV_CODEC_ID_NONE;
  return id == AV_CODEC_ID_ADPCM_IMA_WAV && coding.bitsPerSample == 8 ? AV_CODEC_ID_ADPCM_ZORK : id;
}

Owner<AVCodecParameters> MakeParameters(const MediaAccessorCoding& coding, AVCodecID id) {
  Owner<AVCodecParameters> parameters(avcodec_parameters_alloc());
  if (parameters == nullptr) throw std::bad_alloc();
  const std::int64_t bitRate = std::int64_t{coding.averageBytesPerSecond} * 8;
  parameters->codec_type = AVMEDIA_TYPE_AUDIO;
  parameters->codec_id = id;
  parameters->codec_tag = coding.tag;
  parameters->bit_rate = bitRate <= INT_MAX ? bitRate : 0;
  parameters->block_align = static_cast<int>(coding.blockAlign);
  parameters->bits_per_coded_sample = static_cast<int>(coding.bitsPerSample);
  if (id == AV_CODEC_ID_ADPCM_G726) {
    // The bits of a code, which some writers do not tell.
    parameters->bits_per_coded_sample =
        static_cast<int>(parameters->bit_rate / coding.samplesPerSecond);
  }
  // LATM tells both itself; those of the record are of before the spectrum was extended.
  if (id != AV_CODEC_ID_AAC_LATM) {
    parameters->sample_rate = static_cast<int>(coding.samplesPerSecond);
    parameters->ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
    parameters->ch_layout.nb_channels = static_cast<int>(coding.channels);
  }
  if (coding.extraBytes > 0) {
    void* const extra = av_mallocz(coding.extraBytes + AV_INPUT_BUFFER_PADDING_SIZE);
    if (extra == nullptr) throw std::bad_alloc();
    std::memcpy(extra, coding.extra, coding.extraBytes);
    parameters->extradata = static_cast<std::uint8_t*>(extra);
    parameters->extradata_size = static_cast<int>(coding.extraBytes);
  }
  return parameters;
}

}  // namespace Quorvex::ffmpeg
