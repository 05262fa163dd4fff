// The module's face: the functions of module_abi.h, which no exception leaves.
#include "modules/ffmpeg/coder.h"

namespace {

using namespace Quorvex::ffmpeg;

template <class Open>
MediaAccessorCoder* OpenCoder(const Open& open, const MediaAccessorCoding* coding) noexcept try {
  return open(*coding).release();
} catch (...) {
  return nullptr;
}

int Convert(MediaAccessorCoder* coder, const unsigned char* source, size_t sourceBytes,
            MediaAccessorConvertExtent extent, unsigned char* output, size_t outputBytes,
            size_t* used, size_t* produced) {
  const bool isConverted =
      coder->Convert({source, sourceBytes}, extent, {output, outputBytes}, *used, *produced);
  return isConverted ? 1 : 0;
}

constexpr MediaAccessorCodingModule kModule = {
    .version = MEDIA_ACCESSOR_CODING_MODULE_VERSION,
    .openDecoder = [](const MediaAccessorCoding* source) { return OpenCoder(OpenDecoder, source); },
    .completeEncoding =
        [](MediaAccessorCoding* target) { return CompleteEncoding(*target) ? 1 : 0; },
    .openEncoder = [](const MediaAccessorCoding* target) { return OpenCoder(OpenEncoder, target); },
    .outputBytes = [](const MediaAccessorCoder* coder,
                      size_t sourceBytes) { return coder->OutputBytes(sourceBytes); },
    .convert = Convert,
    .close = [](MediaAccessorCoder* coder) { delete coder; },
};

}  // namespace

extern "C" [[gnu::visibility("default")]] const MediaAccessorCodingModule*
MediaAccessorGetCodingModule(std::uint32_t version) {
  return version == kModule.version ? &kModule : nullptr;
}
