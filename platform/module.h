// Modules: shared objects on Linux, DLLs on Windows.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Quorvex::platform {

/// A loaded module; unloaded by the destructor. One thread at a time.
class Module {
 public:
  Module() = default;
  ~Module();
  Module(Module&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  Module& operator=(Module&&) = delete;

  /// Loads a module, with everything that it depends on. False when that fails or one is loaded
  /// already.
  /// @param path   a full path: nothing is searched for.
  /// @param error  receives the system's own words for a failure. May throw std::bad_alloc.
  bool Load(const std::wstring& path, std::wstring& error);

  /// The address of an exported function as a function of the given type; null when it has none of
  /// that name.
  template <class Function>
  Function* Find(const char* name) const noexcept {
    return reinterpret_cast<Function*>(FindAddress(name));
  }

  /// Whether both are the same module, under whatever names they were loaded.
  bool IsSame(const Module& other) const noexcept { return handle_ == other.handle_; }

 private:
  using Address = void (*)();
  Address FindAddress(const char* name) const noexcept;

  void* handle_ = nullptr;  // null: none
};

/// The directory of the module that this code is in, with a separator at its end. Empty when its
/// path is not known or longer than 1000 characters. May throw std::bad_alloc.
std::wstring OwnModuleDirectory();

/// The full paths of the modules in a directory whose name, without the ending for modules (".so"
/// on Linux, ".dll" on Windows), matches one of some patterns, in which '*' stands for any text.
/// Those of an earlier pattern come first, then the order is that of their character codes. May
/// throw std::bad_alloc.
std::vector<std::wstring> FindModules(const std::wstring& directory,
                                      std::span<const std::wstring_view> patterns);

/// Lets modules find what they depend on in a directory too, until the end of the scope. On Linux a
/// module says itself where to look, and this does nothing.
class ModuleSearchScope {
 public:
  explicit ModuleSearchScope(const std::wstring& directory);
  ~ModuleSearchScope();
  ModuleSearchScope(const ModuleSearchScope&) = delete;
  ModuleSearchScope& operator=(const ModuleSearchScope&) = delete;

 private:
  std::wstring previous_;
};

/// Which media frameworks of the system could be loaded just now. They are unloaded again.
struct MediaFrameworks {
  bool belongToSystem = false;  ///< whether this kind of system has such frameworks at all
  bool directShow = false;
  bool mediaFoundation = false;
};
MediaFrameworks ProbeMediaFrameworks();

}  // namespace Quorvex::platform
