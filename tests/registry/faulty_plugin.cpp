// Plug-in modules that lack something or do something wrong, each compiled with its own choice:
//     PLUGIN_VERSION      what GetOptionalLibraryVersion returns; without it the function is
//     missing PLUGIN_COUNT        the statements of GetOptionalFactoryCount; likewise
//     PLUGIN_EXTENSION    the extension of the module's one factory
//     PLUGIN_DECLARATION  statements that run when the factory is asked for its extensions
//     PLUGIN_WRITER       the statements of GetFFmpegWriterInstance; without it that is missing
#include <MediaAccessor/all.h>
#include <MediaAccessor/plugin.h>

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
  static const FaultyFactory factory;
  for (unsigned long i = 0; i < capacity; ++i) factories[i] = i == 1 ? &factory : nullptr;
  return 1000;  // more than there is room for
}
#endif

#ifdef PLUGIN_WRITER
Quorvex::CMediaFileWriter* GetFFmpegWriterInstance() { PLUGIN_WRITER; }
#endif
