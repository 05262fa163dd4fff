// Plug-in modules that lack something or do something wrong, each compiled with its own choice:
//
//     PLUGIN_VERSION      what GetOptionalLibraryVersion returns
//     PLUGIN_COUNT        the statements of GetOptionalFactoryCount
//     PLUGIN_WRITER       the statements of GetFFmpegWriterInstance
//     PLUGIN_LOADING      statements that run while the module is loaded
//     PLUGIN_EXTENSION    the extension of the module's one factory
//     PLUGIN_DECLARATION  statements that run when the factory is asked for its extensions
//
// Without one of the first three the function is missing.
#include <MediaAccessor/all.h>
#include <MediaAccessor/plugin.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "tests/fake_media.h"

#ifdef PLUGIN_VERSION
unsigned long GetOptionalLibraryVersion() { return PLUGIN_VERSION; }
#endif

#ifdef PLUGIN_COUNT
namespace {

class FaultyFactory : public tests::FakeFactory {
 public:
  FaultyFactory() : FakeFactory({PLUGIN_EXTENSION}) {
    format.description = PLUGIN_EXTENSION;
    format.throwsInCreate = true;
  }
  unsigned long GetExtensionCount() const override {
    PLUGIN_DECLARATION;
    return FakeFactory::GetExtensionCount();
  }
};

}  // namespace

unsigned long GetOptionalFactoryCount() { PLUGIN_COUNT; }

unsigned long GetOptionalFactories(const Quorvex::CMediaFileFactory** factories,
                                   unsigned long capacity) {
  static const auto& factory = *new FaultyFactory;
  for (unsigned long i = 0; i < capacity; ++i) factories[i] = i == 1 ? &factory : nullptr;
  return ~0UL;  // more than there is room for
}
#endif

#ifdef PLUGIN_LOADING
[[maybe_unused]] static const bool loaded = [] {
  PLUGIN_LOADING;
  return true;
}();
#endif

#ifdef PLUGIN_WRITER
Quorvex::CMediaFileWriter* GetFFmpegWriterInstance() { PLUGIN_WRITER; }
#endif
