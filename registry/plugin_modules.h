// Plug-in modules beside the library.
#pragma once

#include <MediaAccessor/result_code.h>

namespace Quorvex {

class CMediaFileWriter;
class FactoryRegistry;

/// Loads the plug-in modules that are not loaded yet and registers the factories of them all. To be
/// called under the registry's lock. May throw std::bad_alloc.
/// @return QVERR_OK, also when modules were skipped; otherwise the first failure of a factory to be
///         registered.
QVERRORCODE_TAG RegisterPluginFactories(FactoryRegistry& registry);

/// Makes a new writer.
using PluginWriterEntry = CMediaFileWriter*();

/// Where the writers of the plug-in modules come from; null when no module has one. Any thread.
PluginWriterEntry* GetPluginWriterEntry() noexcept;

}  // namespace Quorvex
