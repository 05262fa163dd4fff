// The one list of built-in formats. A format adds its header above and its line below.
#include "registry/built_in_factories.h"

#include "formats/portable_wav/portable_wav_media_file.h"

namespace Quorvex {

std::span<const CMediaFileFactory* const> BuiltInFactories() {
  static const CMediaFileFactory* const factories[] = {
      &PortableInputWAVMediaFileFactory(),
  };
  return factories;
}

}  // namespace Quorvex
