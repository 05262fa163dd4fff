// Everything that the library offers to applications. Plug-in modules include plugin.h besides.
#pragma once

#include <MediaAccessor/audio_segment.h>
#include <MediaAccessor/export.h>
#include <MediaAccessor/g711_decoder.h>
#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/library.h>
#include <MediaAccessor/log.h>
#include <MediaAccessor/media_accessor.h>
#include <MediaAccessor/media_accessor_channel_selector.h>
#include <MediaAccessor/media_accessor_decorator.h>
#include <MediaAccessor/media_accessor_mixer.h>
#include <MediaAccessor/media_file.h>
#include <MediaAccessor/media_file_factory.h>
#include <MediaAccessor/media_file_functions.h>
#include <MediaAccessor/media_file_writer.h>
#include <MediaAccessor/media_sink.h>
#include <MediaAccessor/multi_channel_media_file.h>
#include <MediaAccessor/ownership.h>
#include <MediaAccessor/registry.h>
#include <MediaAccessor/resampling_media_accessor.h>
#include <MediaAccessor/result_code.h>
#include <MediaAccessor/text.h>
#include <MediaAccessor/vox_media_file.h>
#include <MediaAccessor/wav_file_writer.h>
