// Finding, checking and keeping plug-in modules. What can be wrong with one stays its own affair:
// it is skipped, the log says why, and the others go on.
#include "registry/plugin_modules.h"

#include <MediaAccessor/plugin.h>

#include <algorithm>
#include <atomic>
#include <deque>
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
  std::vector<const CMediaFileFactory*> factories;  // none when the module was skipped
};

constinit std::atomic<PluginWriterEntry*> writerEntry{nullptr};

// Every module that was tried, once in the process. None is ever unloaded, a skipped one neither:
// it may have registered a factory or started a thread by itself. Never destroyed.
std::deque<PluginModule>& KnownModules() {
  static auto& modules = *new std::deque<PluginModule>;
  return modules;
}

bool IsKnown(const std::wstring& path) {
  const auto& modules = KnownModules();
  return std::any_of(modules.begin(), modules.end(),
                     [&](const PluginModule& other) { return other.path == path; });
}

bool IsLoadedTwice(const PluginModule& plugin) {
  const auto& modules = KnownModules();
  return std::any_of(modules.begin(), modules.end(), [&](const PluginModule& other) {
    return &other != &plugin && other.module.IsSame(plugin.module);
  });
}

// Loads a module and takes what it offers. Its own code runs here, and may throw.
// @return why it is skipped; nothing when it is not.
std::wstring TakeOffer(PluginModule& plugin) {
  const platform::Module& module = plugin.module;
  std::wstring error;
  if (!plugin.module.Load(plugin.path, error)) return error;
  if (IsLoadedTwice(plugin)) return L"loaded already, under another name";
  const auto getVersion =
      module.Find<decltype(GetOptionalLibraryVersion)>("GetOptionalLibraryVersion");
  const auto getCount = module.Find<decltype(GetOptionalFactoryCount)>("GetOptionalFactoryCount");
  const auto getFactories = module.Find<decltype(GetOptionalFactories)>("GetOptionalFactories");
  const auto writer = module.Find<PluginWriterEntry>("GetFFmpegWriterInstance");
  const unsigned long version = getVersion != nullptr ? getVersion() : kPluginInterfaceVersion;
  if (version != kPluginInterfaceVersion) {
    return L"its interface has version " + std::to_wstring(version) + L", this library's has " +
           std::to_wstring(kPluginInterfaceVersion);
  }
  std::wstring lacking;
  if (getVersion == nullptr) lacking += L" GetOptionalLibraryVersion";
  if (getCount == nullptr) lacking += L" GetOptionalFactoryCount";
  if (getFactories == nullptr) lacking += L" GetOptionalFactories";
  std::vector<const CMediaFileFactory*> factories;
  // Without a version to check, factories are not to be trusted with a call.
  if (getVersion != nullptr && getCount != nullptr && getFactories != nullptr) {
    const unsigned long count = getCount();
    if (count > kLargestPluginFactoryCount) return L"it has too many factories";
    factories.resize(count);
    factories.resize(std::min(count, getFactories(factories.data(), count)));
    std::erase(factories, nullptr);
  }
  LibraryLog().Write((L"Plug-in module loaded: " + plugin.path + L": factories: " +
                      std::to_wstring(factories.size()) + L", writer: " +
                      (writer != nullptr ? L"yes" : L"no") +
                      (lacking.empty() ? L"" : L"; it lacks" + lacking))
                         .c_str());
  plugin.factories = std::move(factories);
  if (writer != nullptr) writerEntry = writer;
  return {};
}

void LoadModule(const std::wstring& path) {
  if (IsKnown(path)) return;
  PluginModule& plugin = KnownModules().emplace_back();
  plugin.path = path;
  std::wstring reason = L"an exception came out of it";
  NoThrow([&] {
    reason = TakeOffer(plugin);
    return QVERR_OK;
  });
  if (reason.empty()) return;
  LibraryLog().Write((L"Plug-in module skipped: " + path + L": " + reason).c_str());
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
  for (const PluginModule& plugin : KnownModules()) {
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
