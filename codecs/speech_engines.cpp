// The one list of speech codec engines. An engine adds its header above and its line below.
#include <string>

#include "codecs/engine.h"
#include "codecs/engines/g722/g722_engine.h"
#include "codecs/engines/g722_1/g722_1_engine.h"
#include "codecs/engines/g723_1/g723_1_engine.h"
#include "codecs/engines/g729a/g729a_engine.h"
#include "support/ft_log.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr const SpeechEngine& (*kEngines[])() noexcept = {
    G722Engine,
    G7221Engine,
    G7231Engine,
    G729AEngine,
};

}  // namespace

const SpeechEngine* FindSpeechEngine(std::string_view name) noexcept {
  for (const auto engine : kEngines) {
    if (name == engine().name) return &engine();
  }
  LogRefusal(name, L"there is no engine for this speech codec");
  return nullptr;
}

void LogRefusal(std::string_view codec, const wchar_t* why, long bitRate) noexcept {
  NoThrow([&] {
    const std::wstring name = ToWide(std::string(codec).c_str());
    if (bitRate != 0) {
      LibraryLog().Printf(L"%s at %ld bit/s: %s", name.c_str(), bitRate, why);
    } else {
      LibraryLog().Printf(L"%s: %s", name.c_str(), why);
    }
    return QVERR_OK;
  });
}

}  // namespace Quorvex
