// The one list of speech codec engines. An engine adds its header above and its line below.
#include <string>

#include "codecs/engine.h"
#include "codecs/engines/g722/g722_engine.h"
#include "codecs/engines/g722_1/g722_1_engine.h"
#include "support/ft_log.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr const SpeechEngine& (*kEngines[])() noexcept = {
    G722Engine,
    G7221Engine,
};

}  // namespace

const SpeechEngine* FindSpeechEngine(std::string_view name) noexcept {
  for (const auto engine : kEngines) {
    if (name == engine().name) return &engine();
  }
  NoThrow([name] {
    LibraryLog().Printf(L"%s: there is no engine for this speech codec",
                        ToWide(std::string(name).c_str()).c_str());
    return QVERR_OK;
  });
  return nullptr;
}

}  // namespace Quorvex
