// Finding, checking and keeping plug-in modules. What can be wrong with one stays its own affair:
// it is skipped, the log says why, and the others go on.
#include "registry/plugin_modules.h"

#include <MediaAccessor/plugin.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/module.h"
#include "registry/factory_registry.h"
#include "support/ft_log.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

// In loading order. The first is a name, the other a family.
constexpr std::wstring_view kModuleNames[] = {L"OptMediaAccessor", L"*MediaAccessor.*"};

struct PluginModule {
  std::wstring path;
  platform::Module module;
  std::vector<const CMediaFileFactory*> factories;
};

constinit std::atomic<PluginWriterEntry*> writerEntry{nullptr};

// Never unloaded, and never destroyed: the registry holds pointers into the modules.
std::vector<PluginModule>& LoadedModules() {
  static auto& modules = *new std::vector<PluginModule>;
  return modules;
}

// What a module says about itself. Its own code runs here, and may throw.
struct Offer {
  bool hasVersion = false;
  unsigned long version = kPluginInterfaceVersion;
  PluginWriterEntry* writer = nullptr;
};

Offer Examine(PluginModule& plugin) {
  Offer offer;
  const platform::Module& module = plugin.module;
  const auto getVersion =
      module.Find<decltype(GetOptionalLibraryVersion)>("GetOptionalLibraryVersion");
  const auto getCount = module.Find<decltype(GetOptionalFactoryCount)>("GetOptionalFactoryCount");
  const auto getFactories = module.Find<decltype(GetOptionalFactories)>("GetOptionalFactories");
  offer.writer = module.Find<PluginWriterEntry>("GetFFmpegWriterInstance");
  offer.hasVersion = getVersion != nullptr;
  if (offer.hasVersion) offer.version = getVersion();
  if (offer.version != kPluginInterfaceVersion) return offer;
  // Without a version to check, factories are not to be trusted with a call.
  if (!offer.hasVersion || getCount == nullptr || getFactories == nullptr) return offer;
  const unsigned long count = getCount();
  if (count > kLargestPluginFactoryCount) throw QVERR_INVALID_ARGUMENT;
  plugin.factories.resize(count);
  plugin.factories.resize(std::min(count, getFactories(plugin.factories.data(), count)));
  std::erase(plugin.factories, nullptr);
  return offer;
}

bool IsLoaded(const platform::Module& module) {
  const auto& modules = LoadedModules();
  return std::any_of(modules.begin(), modules.end(),
                     [&](const PluginModule& other) { return other.module.IsSame(module); });
}

bool IsLoaded(const std::wstring& path) {
  const auto& modules = LoadedModules();
  return std::any_of(modules.begin(), modules.end(),
                     [&](const PluginModule& other) { return other.path == path; });
}

void LoadModule(const std::wstring& path) {
  if (IsLoaded(path)) return;
  PluginModule plugin;
  plugin.path = path;
  const auto skip = [&path](const wchar_t* reason) {
    LibraryLog().Printf(L"Plug-in module skipped: %s: %s", path.c_str(), reason);
  };
  std::wstring error;
  if (!plugin.module.Load(path, error)) return skip(error.c_str());
  if (IsLoaded(plugin.module)) return skip(L"loaded already, under another name");
  Offer offer;
  // An exception must have ended before the module that it came from is unloaded.
  const QVERRORCODE_TAG result = NoThrow([&] {
    offer = Examine(plugin);
    return QVERR_OK;
  });
  if (result == QVERR_INVALID_ARGUMENT) return skip(L"it has too many factories");
  if (result != QVERR_OK) return skip(L"an exception came out of it");
  if (offer.version != kPluginInterfaceVersion) {
    return skip((L"its interface has version " + std::to_wstring(offer.version) +
                 L", this library's has " + std::to_wstring(kPluginInterfaceVersion))
                    .c_str());
  }
  LibraryLog().Printf(L"Plug-in module loaded: %s: factories: %lu, writer: %s%s", path.c_str(),
                      static_cast<unsigned long>(plugin.factories.size()),
                      offer.writer != nullptr ? L"yes" : L"no",
                      offer.hasVersion ? L"" : L"; it lacks GetOptionalLibraryVersion");
  LoadedModules().push_back(std::move(plugin));
  if (offer.writer != nullptr) writerEntry = offer.writer;
}

void LoadModules() {
  const std::wstring directory = platform::OwnModuleDirectory();
  if (directory.empty()) {
    LibraryLog().Write(L"No plug-in modules: the library's own directory is not known");
    return;
  }
  const platform::ModuleSearchScope scope(directory);
  for (const std::wstring& path : platform::FindModules(directory, kModuleNames)) LoadModule(path);
}

}  // namespace

QVERRORCODE_TAG RegisterPluginFactories(FactoryRegistry& registry) {
  LoadModules();
  QVERRORCODE_TAG result = QVERR_OK;
  for (const PluginModule& plugin : LoadedModules()) {
    for (const CMediaFileFactory* const factory : plugin.factories) {
      const QVERRORCODE_TAG added = NoThrow([&] { return registry.AddUninitialized(*factory); });
      if (added == QVERR_OK) continue;
      LibraryLog().Printf(L"Plug-in module: %s: a factory failed to be registered: %d",
                          plugin.path.c_str(), static_cast<int>(added));
      if (result == QVERR_OK) result = added;
    }
  }
  return result;
}

PluginWriterEntry* GetPluginWriterEntry() noexcept { return writerEntry; }

}  // namespace Quorvex
