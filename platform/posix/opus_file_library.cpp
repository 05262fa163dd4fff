// libopusfile by dlopen.
#include "platform/opus_file_library.h"

#include <dlfcn.h>

#include "platform/text.h"

namespace Quorvex::platform {
namespace {

// With its binary interface's version.
constexpr const char* kName = "libopusfile.so.0";

struct Library {
  OpusFileFunctions functions;
  std::string error;  // empty: all functions are there
};

template <class Function>
void Find(void* module, const char* name, Function*& function, std::string& error) {
  function = reinterpret_cast<Function*>(::dlsym(module, name));
  if (function == nullptr) error = std::string(kName) + " has no function " + name;
}

Library Load() {
  Library library;
  void* const module = ::dlopen(kName, RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) {
    const char* const reason = ::dlerror();
    library.error = reason != nullptr ? reason : kName;
    return library;
  }
  Find(module, "op_open_callbacks", library.functions.open, library.error);
  Find(module, "op_pcm_total", library.functions.pcmTotal, library.error);
  Find(module, "op_channel_count", library.functions.channelCount, library.error);
  Find(module, "op_read", library.functions.read, library.error);
  Find(module, "op_free", library.functions.free, library.error);
  return library;
}

}  // namespace

const OpusFileFunctions* OpusFileLibrary(std::wstring& error) {
  static const Library library = Load();
  if (library.error.empty()) return &library.functions;
  error = Widen(library.error);
  return nullptr;
}

}  // namespace Quorvex::platform
