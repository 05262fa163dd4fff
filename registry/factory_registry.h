// FactoryRegistry: the table behind the exported registry functions.
#pragma once

#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <MediaAccessor/result_code.h>

#include "support/recursive_lock.h"

namespace Quorvex {

class CMediaFileFactory;

/// The factories to try for one key, in order.
struct CandidateList {
  std::vector<const CMediaFileFactory*> factories;
  std::size_t specificCount = 0;  ///< so many from the extension's own list, the rest are defaults
};

/// Which factories are tried for an extension. Extensions are given as extensions or paths alike.
/// The rules of each operation stand with the exported function of its name; operations may throw
/// std::bad_alloc. Any thread.
class FactoryRegistry {
 public:
  /// Registers the built-in factories through AddUninitialized; its result is Initialize's.
  using BuiltInRegistration = QVERRORCODE_TAG (*)(FactoryRegistry&);

  explicit FactoryRegistry(BuiltInRegistration registration) : registration_(registration) {}

  /// The process's registry. It lives until the process ends.
  static FactoryRegistry& Instance();

  /// Registers the built-in factories unless that is done. @return the registration's result;
  /// QVERR_BUSY when the lock could not be had.
  QVERRORCODE_TAG Initialize();

  QVERRORCODE_TAG Add(const CMediaFileFactory* factory);
  /// Add without registering the built-in factories first: the registration's own form.
  QVERRORCODE_TAG AddUninitialized(const CMediaFileFactory& factory);
  QVERRORCODE_TAG Override(std::wstring_view extension, const CMediaFileFactory* factory);
  QVERRORCODE_TAG AddExtensionAlias(std::wstring_view extension, std::wstring_view alias);
  QVERRORCODE_TAG SetDefault(const CMediaFileFactory* factory, std::wstring_view extension);
  QVERRORCODE_TAG ClearExtension(std::wstring_view extension, bool alsoExcludeDefaults);
  QVERRORCODE_TAG Clear();
  QVERRORCODE_TAG ClearDefaults();

  QVERRORCODE_TAG GetExtensionCount(std::size_t& count);
  QVERRORCODE_TAG GetExtension(std::size_t index, std::wstring& extension);
  /// The candidates for a key made by ExtensionKey or ExtensionForOpening.
  QVERRORCODE_TAG GetCandidates(const std::wstring& key, CandidateList& candidates);
  QVERRORCODE_TAG GetFactoryList(std::vector<const CMediaFileFactory*>& factories);

  /// The registry's lock, for tests.
  RecursiveLock& Lock() noexcept { return lock_; }

 private:
  using Factories = std::vector<const CMediaFileFactory*>;

  struct ExtensionEntry {
    std::wstring key;
    Factories factories;  // the first is tried first
  };

  struct DefaultEntry {
    const CMediaFileFactory* factory = nullptr;
    std::vector<std::wstring> excludedKeys;

    bool Excludes(const std::wstring& key) const;
    void Exclude(const std::wstring& key);
  };

  QVERRORCODE_TAG EnsureInitialized();
  template <class Operation>
  QVERRORCODE_TAG WithTable(const Operation& operation);
  void PutFirst(const std::wstring& key, const CMediaFileFactory* factory);
  void AppendToFactoryList(const CMediaFileFactory& factory);
  void MoveToEndOfFactoryList(const CMediaFileFactory& factory);
  Factories CopyOfFactoryList();

  const BuiltInRegistration registration_;

  RecursiveLock lock_;  // guards the next five
  // Ordered by 16-bit codes on every system: the map's key is the extension in UTF-16.
  std::map<std::u16string, ExtensionEntry> extensions_;
  std::vector<DefaultEntry> defaults_;
  bool registering_ = false;
  QVERRORCODE_TAG registrationResult_ = QVERR_OK;
  std::atomic<bool> initialized_{false};  // written under the lock, read without it
  std::atomic<unsigned long> clears_{0};  // how often Clear ran; written under the lock

  // The factory list has a lock of its own: Add appends to it outside the registry's lock, so that
  // a factory stands in it even when that lock could not be had.
  std::mutex listMutex_;
  Factories factoryList_;
};

}  // namespace Quorvex
