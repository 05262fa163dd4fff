// The one list of built-in formats. A format adds its header above and its line below.
// They are registered in this order, so that the last one of an extension is tried first.
#include "registry/built_in_factories.h"

#include "formats/au/au_media_file.h"
#include "formats/aud/aud_media_file.h"
#include "formats/portable_wav/portable_wav_media_file.h"
#include "formats/vox/vox_media_file.h"
#include "opus/opus_media_file.h"

namespace Quorvex {

std::span<const CMediaFileFactory* const> BuiltInFactories() {
  // clang-format off
  static const CMediaFileFactory* const factories[] = {
      &InputAUDMediaFileFactory(),
      &AUMediaFileFactory(),
      &VOXMediaFileFactory(),
      &PortableInputWAVMediaFileFactory(),
      &OpusMediaFileFactory(),
  };
  // clang-format on
  return factories;
}

}  // namespace Quorvex
