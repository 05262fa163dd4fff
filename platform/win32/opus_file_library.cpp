// libopusfile, linked.
#include "platform/opus_file_library.h"

namespace Quorvex::platform {

const OpusFileFunctions* OpusFileLibrary(std::wstring&) {
  static constexpr OpusFileFunctions kFunctions = {::op_open_callbacks, ::op_pcm_total,
                                                   ::op_channel_count, ::op_read, ::op_free};
  return &kFunctions;
}

}  // namespace Quorvex::platform
