// Keeps the host's licence data under a mutex of its own.
#include "registry/licence_data.h"

#include <mutex>
#include <utility>

namespace Quorvex {
namespace {

struct Store {
  std::mutex mutex;
  LicenceData data;  // guarded by mutex
};

Store& TheStore() {
  static auto& store = *new Store;  // never destroyed, like the registry
  return store;
}

}  // namespace

void StoreLicenceTexts(std::wstring licensee, std::wstring key) {
  const std::lock_guard guard(TheStore().mutex);
  TheStore().data.licensee = std::move(licensee);
  TheStore().data.key = std::move(key);
}

void StoreLicenceCallbacks(MediaAccessorLicenceQuery query, MediaAccessorLicenceCheck check) {
  const std::lock_guard guard(TheStore().mutex);
  TheStore().data.query = query;
  TheStore().data.check = check;
}

LicenceData StoredLicenceData() {
  const std::lock_guard guard(TheStore().mutex);
  return TheStore().data;
}

}  // namespace Quorvex
