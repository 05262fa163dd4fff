// The exported registry functions: text widened, exceptions stopped, everything else is the
// registry's.
#include <MediaAccessor/registry.h>

#include "registry/extension_key.h"
#include "registry/factory_registry.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

template <class Operation>
QVERRORCODE_TAG OnRegistry(const Operation& operation) noexcept {
  return NoThrow([&] { return operation(FactoryRegistry::Instance()); });
}

template <class Character>
unsigned long CopyExtension(unsigned long index, Character* buffer,
                            unsigned long capacity) noexcept {
  std::wstring extension;
  const QVERRORCODE_TAG result = OnRegistry(
      [&](FactoryRegistry& registry) { return registry.GetExtension(index, extension); });
  return result == QVERR_OK ? CopyText(extension, buffer, capacity) : 0;
}

template <class Character>
QVERRORCODE_TAG GetCandidate(const Character* pathOrExtension, unsigned long index,
                             const CMediaFileFactory*& factory, bool& isDefault) noexcept {
  factory = nullptr;
  return OnRegistry([&](FactoryRegistry& registry) {
    CandidateList candidates;
    const QVERRORCODE_TAG result =
        registry.GetCandidates(ExtensionKey(ToWide(pathOrExtension)), candidates);
    if (result != QVERR_OK) return result;
    if (index >= candidates.factories.size()) return QVERR_INVALID_ARGUMENT;
    factory = candidates.factories[index];
    if (index >= candidates.specificCount) isDefault = true;  // never cleared: the caller does that
    return QVERR_OK;
  });
}

}  // namespace

QVERRORCODE_TAG MediaAccessorRegistryAdd(const CMediaFileFactory* factory) noexcept {
  return OnRegistry([&](FactoryRegistry& registry) { return registry.Add(factory); });
}

QVERRORCODE_TAG MediaAccessorRegistryOverride(const char* extension,
                                              const CMediaFileFactory* factory) noexcept {
  return OnRegistry(
      [&](FactoryRegistry& registry) { return registry.Override(ToWide(extension), factory); });
}

QVERRORCODE_TAG MediaAccessorRegistryOverride(const wchar_t* extension,
                                              const CMediaFileFactory* factory) noexcept {
  return OnRegistry(
      [&](FactoryRegistry& registry) { return registry.Override(ToWide(extension), factory); });
}

QVERRORCODE_TAG MediaAccessorRegistryAddExtensionAlias(const char* extension,
                                                       const char* alias) noexcept {
  return OnRegistry([&](FactoryRegistry& registry) {
    return registry.AddExtensionAlias(ToWide(extension), ToWide(alias));
  });
}

QVERRORCODE_TAG MediaAccessorRegistryAddExtensionAlias(const wchar_t* extension,
                                                       const wchar_t* alias) noexcept {
  return OnRegistry([&](FactoryRegistry& registry) {
    return registry.AddExtensionAlias(ToWide(extension), ToWide(alias));
  });
}

QVERRORCODE_TAG MediaAccessorRegistrySetDefault(const CMediaFileFactory* factory) noexcept {
  return MediaAccessorRegistrySetDefault(factory, L"");
}

QVERRORCODE_TAG MediaAccessorRegistrySetDefault(const CMediaFileFactory* factory,
                                                const char* extension) noexcept {
  return OnRegistry(
      [&](FactoryRegistry& registry) { return registry.SetDefault(factory, ToWide(extension)); });
}

QVERRORCODE_TAG MediaAccessorRegistrySetDefault(const CMediaFileFactory* factory,
                                                const wchar_t* extension) noexcept {
  return OnRegistry(
      [&](FactoryRegistry& registry) { return registry.SetDefault(factory, ToWide(extension)); });
}

QVERRORCODE_TAG MediaAccessorRegistryClear(const char* extension,
                                           bool alsoExcludeDefaults) noexcept {
  return OnRegistry([&](FactoryRegistry& registry) {
    return registry.ClearExtension(ToWide(extension), alsoExcludeDefaults);
  });
}

QVERRORCODE_TAG MediaAccessorRegistryClear(const wchar_t* extension,
                                           bool alsoExcludeDefaults) noexcept {
  return OnRegistry([&](FactoryRegistry& registry) {
    return registry.ClearExtension(ToWide(extension), alsoExcludeDefaults);
  });
}

QVERRORCODE_TAG MediaAccessorRegistryClear() noexcept {
  return OnRegistry([](FactoryRegistry& registry) { return registry.Clear(); });
}

QVERRORCODE_TAG MediaAccessorRegistryClearDefaults() noexcept {
  return OnRegistry([](FactoryRegistry& registry) { return registry.ClearDefaults(); });
}

unsigned long MediaAccessorRegistryGetExtensionCount() noexcept {
  std::size_t count = 0;
  OnRegistry([&](FactoryRegistry& registry) { return registry.GetExtensionCount(count); });
  return static_cast<unsigned long>(count);
}

unsigned long MediaAccessorRegistryGetExtension(unsigned long index, char* buffer,
                                                unsigned long capacity) noexcept {
  return CopyExtension(index, buffer, capacity);
}

unsigned long MediaAccessorRegistryGetExtension(unsigned long index, wchar_t* buffer,
                                                unsigned long capacity) noexcept {
  return CopyExtension(index, buffer, capacity);
}

QVERRORCODE_TAG MediaAccessorRegistryGetFactory(const char* pathOrExtension, unsigned long index,
                                                const CMediaFileFactory*& factory,
                                                bool& isDefault) noexcept {
  return GetCandidate(pathOrExtension, index, factory, isDefault);
}

QVERRORCODE_TAG MediaAccessorRegistryGetFactory(const wchar_t* pathOrExtension, unsigned long index,
                                                const CMediaFileFactory*& factory,
                                                bool& isDefault) noexcept {
  return GetCandidate(pathOrExtension, index, factory, isDefault);
}

unsigned long GetMediaFileFactoryCount() noexcept {
  std::vector<const CMediaFileFactory*> factories;
  OnRegistry([&](FactoryRegistry& registry) { return registry.GetFactoryList(factories); });
  return static_cast<unsigned long>(factories.size());
}

QVERRORCODE_TAG GetMediaFileFactory(unsigned long index,
                                    const CMediaFileFactory*& factory) noexcept {
  factory = nullptr;
  return OnRegistry([&](FactoryRegistry& registry) {
    std::vector<const CMediaFileFactory*> factories;
    const QVERRORCODE_TAG result = registry.GetFactoryList(factories);
    if (result != QVERR_OK) return result;
    if (index >= factories.size()) return QVERR_INVALID_ARGUMENT;
    factory = factories[index];
    return QVERR_OK;
  });
}

}  // namespace Quorvex
