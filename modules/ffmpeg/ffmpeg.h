// What this module uses of FFmpeg, with owners.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/mem.h>
#include <libavutil/samplefmt.h>
}

namespace Quorvex::ffmpeg {

struct Closer {
  void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
  void operator()(AVCodecParameters* parameters) const noexcept {
    avcodec_parameters_free(&parameters);
  }
  void operator()(AVCodecParserContext* parser) const noexcept { av_parser_close(parser); }
  void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
  void operator()(AVBufferRef* buffer) const noexcept { av_buffer_unref(&buffer); }
};

template <class Object>
using Owner = std::unique_ptr<Object, Closer>;

/// An offset for the level of what a context has to say that takes it beyond every level that a log
/// can be set to. The log itself is the whole process's, and not ours to set.
inline constexpr int kUnheard = AV_LOG_TRACE + AV_LOG_FATAL;

}  // namespace Quorvex::ffmpeg
