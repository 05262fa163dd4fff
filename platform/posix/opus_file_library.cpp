// libopusfile by dlopen.
#include "platform/opus_file_library.h"

#include <dlfcn.h>

#include <atomic>
#include <memory>

#include "platform/text.h"

namespace Quorvex::platform {
namespace {

// With its binary interface's version.
constexpr const char* kName = "libopusfile.so.0";

template <class Function>
bool Find(void* module, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(::dlsym(module, name));
  return function != nullptr;
}

bool Load(OpusFileFunctions& functions) {
  void* const module = ::dlopen(kName, RTLD_NOW | RTLD_LOCAL);
  return module != nullptr && Find(module, "op_open_callbacks", functions.open) &&
         Find(module, "op_pcm_total", functions.pcmTotal) &&
         Find(module, "op_channel_count", functions.channelCount) &&
         Find(module, "op_read", functions.read) && Find(module, "op_free", functions.free);
}

}  // namespace

// Only success is remembered, since what failed once may be there later. No lock is held while the
// system loads: it has one of its own, and a module that is being loaded may come by here.
const OpusFileFunctions* OpusFileLibrary(std::wstring& error) {
  static std::atomic<const OpusFileFunctions*> loaded = nullptr;
  const OpusFileFunctions* known = loaded.load(std::memory_order_acquire);
  if (known != nullptr) return known;
  auto functions = std::make_unique<OpusFileFunctions>();
  if (!Load(*functions)) {
    const char* const reason = ::dlerror();
    error = Widen(reason != nullptr ? reason : kName);
    return nullptr;
  }
  // Of threads that come at once, one keeps what it found, for ever.
  if (loaded.compare_exchange_strong(known, functions.get())) known = functions.release();
  return known;
}

}  // namespace Quorvex::platform
