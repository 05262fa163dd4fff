// The one list of built-in formats. A format adds its header above and its line below.
#include "registry/built_in_factories.h"

#include "formats/au/au_media_file.h"
#include "formats/portable_wav/portable_wav_media_file.h"
#include "formats/vox/vox_media_file.h"
#include "opus/opus_media_file.h"

namespace Quorvex {

std::span<const CMediaFileFactory* const> BuiltInFactories() {
  static const CMediaFileFactory* const factories[] = {
      &AUMediaFileFactory(),
      &VOXMediaFileFactory(),
      &PortableInputWAVMediaFileFactory(),
      &OpusMediaFileFactory(),
  };
  return factories;
}

}  // namespace Quorvex
