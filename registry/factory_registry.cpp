// The registry's table. The rule that orders everything: the last one registered is tried first.
#include "registry/factory_registry.h"

#include <algorithm>
#include <utility>

#include <MediaAccessor/media_file_factory.h>

#include "platform/text.h"
#include "registry/extension_key.h"
#include "registry/initialization.h"
#include "support/no_throw.h"

namespace Quorvex {
namespace {

constexpr int kLockLimit = 1000;  // ms

// What a factory says about itself is not to cost gigabytes.
constexpr unsigned long kMostExtensions = 1000;
constexpr unsigned long kLongestExtension = 1000;

std::vector<std::wstring> DeclaredKeys(const CMediaFileFactory& factory) {
  std::vector<std::wstring> keys;
  const unsigned long count = factory.GetExtensionCount();
  if (count > kMostExtensions) throw QVERR_CREATE_FAILED;
  for (unsigned long index = 0; index < count; ++index) {
    const unsigned long length = factory.GetExtension(index, static_cast<wchar_t*>(nullptr), 0);
    if (length > kLongestExtension) throw QVERR_CREATE_FAILED;
    std::wstring extension(length + 1, L'\0');
    factory.GetExtension(index, extension.data(), length + 1);
    extension.resize(length);
    keys.push_back(ExtensionKey(extension));
  }
  return keys;
}

template <class Container, class Value>
bool Contains(const Container& container, const Value& value) {
  return std::find(container.begin(), container.end(), value) != container.end();
}

}  // namespace

bool FactoryRegistry::DefaultEntry::Excludes(const std::wstring& key) const {
  return Contains(excludedKeys, key);
}

void FactoryRegistry::DefaultEntry::Exclude(const std::wstring& key) {
  if (!Excludes(key)) excludedKeys.push_back(key);
}

FactoryRegistry& FactoryRegistry::Instance() {
  // Never destroyed: applications may use the library from their own static destructors.
  static auto& instance = *new FactoryRegistry(RegisterBuiltInFactories);
  return instance;
}

QVERRORCODE_TAG FactoryRegistry::Initialize() {
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return QVERR_BUSY;
  // A factory that uses the registry while it is being registered finds it as it is so far.
  if (initialized_ || registering_) return registrationResult_;
  registering_ = true;
  registrationResult_ = NoThrow([this] { return registration_(*this); });
  registering_ = false;
  initialized_.store(true, std::memory_order_release);
  return registrationResult_;
}

// Initialize for everybody who only needs it done: the registration's own result does not stop
// them.
QVERRORCODE_TAG FactoryRegistry::EnsureInitialized() {
  if (initialized_.load(std::memory_order_acquire)) return QVERR_OK;
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return QVERR_BUSY;
  Initialize();
  return QVERR_OK;
}

// Runs an operation on the table, under the lock, the built-in factories being registered.
template <class Operation>
QVERRORCODE_TAG FactoryRegistry::WithTable(const Operation& operation) {
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return QVERR_BUSY;
  EnsureInitialized();
  return operation();
}

void FactoryRegistry::PutFirst(const std::wstring& key, const CMediaFileFactory* factory) {
  Factories factories = {factory};
  ExtensionEntry& entry = extensions_[platform::ToUtf16(key)];
  for (const CMediaFileFactory* other : entry.factories) {
    if (other != factory) factories.push_back(other);
  }
  entry.key = key;
  entry.factories = std::move(factories);
}

void FactoryRegistry::AppendToFactoryList(const CMediaFileFactory& factory) {
  const std::lock_guard guard(listMutex_);
  factoryList_.push_back(&factory);
}

// Leaves the factory once at the end, whether or not the last place that it had is still there.
void FactoryRegistry::MoveToEndOfFactoryList(const CMediaFileFactory& factory) {
  const std::lock_guard guard(listMutex_);
  const auto last = std::find(factoryList_.rbegin(), factoryList_.rend(), &factory);
  if (last != factoryList_.rend()) factoryList_.erase(std::next(last).base());
  factoryList_.push_back(&factory);
}

FactoryRegistry::Factories FactoryRegistry::CopyOfFactoryList() {
  const std::lock_guard guard(listMutex_);
  return factoryList_;
}

QVERRORCODE_TAG FactoryRegistry::Add(const CMediaFileFactory* factory) {
  if (factory == nullptr) return QVERR_NO_SOURCE;
  const std::vector<std::wstring> keys = DeclaredKeys(*factory);
  const unsigned long clearsBefore = clears_;
  const QVERRORCODE_TAG ready = EnsureInitialized();
  AppendToFactoryList(*factory);
  if (ready != QVERR_OK) return ready;
  return WithTable([&] {
    // Cleared meanwhile: the built-in factories came back, and stand before this one in the list.
    if (clears_ != clearsBefore) MoveToEndOfFactoryList(*factory);
    for (const std::wstring& key : keys) PutFirst(key, factory);
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::AddUninitialized(const CMediaFileFactory& factory) {
  const std::vector<std::wstring> keys = DeclaredKeys(factory);
  AppendToFactoryList(factory);
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return QVERR_BUSY;
  for (const std::wstring& key : keys) PutFirst(key, &factory);
  return QVERR_OK;
}

QVERRORCODE_TAG FactoryRegistry::Override(std::wstring_view extension,
                                          const CMediaFileFactory* factory) {
  if (factory == nullptr) return QVERR_NO_SOURCE;
  return WithTable([&] {
    PutFirst(ExtensionKey(extension), factory);
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::AddExtensionAlias(std::wstring_view extension,
                                                   std::wstring_view alias) {
  if (alias.empty()) return QVERR_INVALID_ARGUMENT;
  CandidateList candidates;
  if (!extension.empty()) {
    const QVERRORCODE_TAG result = GetCandidates(ExtensionKey(extension), candidates);
    if (result != QVERR_OK) return result;
  }
  return WithTable([&] {
    // Whoever is put first last ends in front: candidates go in backwards, to keep their order; the
    // factory list goes in forwards, so that the most recently added one is tried first.
    Factories factories = std::move(candidates.factories);
    if (factories.empty()) {
      factories = CopyOfFactoryList();
    } else {
      std::reverse(factories.begin(), factories.end());
    }
    const std::wstring key = ExtensionKey(alias);
    for (const CMediaFileFactory* factory : factories) PutFirst(key, factory);
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::SetDefault(const CMediaFileFactory* factory,
                                            std::wstring_view extension) {
  if (factory == nullptr) return QVERR_NO_SOURCE;
  return WithTable([&] {
    const std::wstring key = extension.empty() ? std::wstring() : ExtensionKey(extension);
    auto entry = std::find_if(defaults_.begin(), defaults_.end(),
                              [&](const DefaultEntry& e) { return e.factory == factory; });
    if (entry == defaults_.end()) entry = defaults_.insert(entry, DefaultEntry{factory, {}});
    if (!extension.empty()) entry->Exclude(key);
    std::rotate(entry, entry + 1, defaults_.end());
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::ClearExtension(std::wstring_view extension,
                                                bool alsoExcludeDefaults) {
  return WithTable([&] {
    const std::wstring key = ExtensionKey(extension);
    extensions_.erase(platform::ToUtf16(key));
    if (alsoExcludeDefaults) {
      for (DefaultEntry& entry : defaults_) entry.Exclude(key);
    }
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::Clear() {
  const RecursiveLockGuard guard(lock_, kLockLimit);
  if (!guard) return QVERR_BUSY;
  extensions_.clear();
  defaults_.clear();
  {
    const std::lock_guard listGuard(listMutex_);
    factoryList_.clear();
  }
  initialized_ = false;
  ++clears_;
  return QVERR_OK;
}

QVERRORCODE_TAG FactoryRegistry::ClearDefaults() {
  return WithTable([&] {
    defaults_.clear();
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::GetExtensionCount(std::size_t& count) {
  return WithTable([&] {
    count = extensions_.size();
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::GetExtension(std::size_t index, std::wstring& extension) {
  return WithTable([&] {
    if (index >= extensions_.size()) return QVERR_INVALID_ARGUMENT;
    extension = std::next(extensions_.begin(), static_cast<std::ptrdiff_t>(index))->second.key;
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::GetCandidates(const std::wstring& key, CandidateList& candidates) {
  return WithTable([&] {
    const auto entry = extensions_.find(platform::ToUtf16(key));
    candidates.factories = entry == extensions_.end() ? Factories() : entry->second.factories;
    candidates.specificCount = candidates.factories.size();
    for (const DefaultEntry& fallback : defaults_) {
      if (Contains(candidates.factories, fallback.factory) || fallback.Excludes(key)) continue;
      candidates.factories.push_back(fallback.factory);
    }
    return QVERR_OK;
  });
}

QVERRORCODE_TAG FactoryRegistry::GetFactoryList(Factories& factories) {
  const QVERRORCODE_TAG ready = EnsureInitialized();
  if (ready == QVERR_OK) factories = CopyOfFactoryList();
  return ready;
}

}  // namespace Quorvex
