// Format records of wave files, as libavcodec wants to know them.
#pragma once

#include "compression/module_abi.h"
#include "modules/ffmpeg/ffmpeg.h"

namespace Quorvex::ffmpeg {

/// Whether the numbers of a record are within what is looked at further.
bool MakesSense(const MediaAccessorCoding& coding) noexcept;

/// The codec for a record; AV_CODEC_ID_NONE when there is none.
AVCodecID CodecOf(const MediaAccessorCoding& coding) noexcept;

/// The parameters of a stream. May throw std::bad_alloc.
Owner<AVCodecParameters> MakeParameters(const MediaAccessorCoding& coding, AVCodecID id);

}  // namespace Quorvex::ffmpeg
