// Libraries of the system that most processes never need: not linked, since mapping them would
// lengthen every start (winmm.dll brings the user interface along), but loaded on first use.
#pragma once

#include <atomic>
#include <memory>

#include "platform/win32/windows_api.h"

namespace Quorvex::platform {

/// A library of the system, loaded from the system's own directory so that nobody can put another
/// in its place, and never unloaded. Null when there is none. Any thread.
HMODULE LoadSystemLibrary(const wchar_t* name) noexcept;

/// Looks up a function by its name. False when there is none.
template <class Function>
bool FindFunction(HMODULE library, const char* name, Function*& function) noexcept {
  // GetProcAddress knows no types; by way of a function without any, the compiler agrees.
  function = reinterpret_cast<Function*>(
      reinterpret_cast<void (*)()>(library != nullptr ? ::GetProcAddress(library, name) : nullptr));
  return function != nullptr;
}

/// The one table of a library's functions, filled on first use by `bool Table::Load() noexcept`.
/// Null when that fails, which is not remembered. Any thread; no lock is held while the system
/// loads, which has one of its own. May throw std::bad_alloc.
template <class Table>
const Table* SystemFunctions() {
  static std::atomic<const Table*> loaded = nullptr;
  const Table* known = loaded.load(std::memory_order_acquire);
  if (known != nullptr) return known;
  auto table = std::make_unique<Table>();
  if (!table->Load()) return nullptr;
  // Of threads that come at once, one keeps what it found, for ever.
  if (loaded.compare_exchange_strong(known, table.get())) known = table.release();
  return known;
}

}  // namespace Quorvex::platform
