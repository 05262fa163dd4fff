// Modules over dlopen and dladdr.
#include "platform/module.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fnmatch.h>
#include <stdlib.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "platform/posix/file_name.h"
#include "platform/text.h"

namespace Quorvex::platform {
namespace {

constexpr std::size_t kLongestOwnPath = 1000;

struct DirectoryCloser {
  void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

}  // namespace

Module::~Module() {
  if (handle_ != nullptr) ::dlclose(handle_);
}

bool Module::Load(const std::wstring& path, std::wstring& error) {
  std::string name;
  // Without a slash the name would be searched for.
  if (handle_ != nullptr || !path.starts_with(L'/') || !SystemFileName(path.c_str(), name)) {
    error = L"not the full path of a module";
    return false;
  }
  handle_ = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ != nullptr) return true;
  const char* const reason = ::dlerror();
  error = Widen(reason != nullptr ? reason : "unknown reason");
  return false;
}

Module::Address Module::FindAddress(const char* name) const noexcept {
  return handle_ != nullptr ? reinterpret_cast<Address>(::dlsym(handle_, name)) : nullptr;
}

std::wstring OwnModuleDirectory() {
  Dl_info information{};
  if (::dladdr(reinterpret_cast<const void*>(&OwnModuleDirectory), &information) == 0) return {};
  // As the loader was told it: relative for a program that was started so.
  const std::unique_ptr<char, void (*)(void*)> resolved(::realpath(information.dli_fname, nullptr),
                                                        &std::free);
  if (resolved == nullptr) return {};
  const std::wstring path = Widen(resolved.get());
  return path.size() <= kLongestOwnPath ? path.substr(0, path.find_last_of(L'/') + 1) : L"";
}

// One walk over the directory, which may be one with thousands of libraries.
std::vector<std::wstring> FindModules(const std::wstring& directory,
                                      std::span<const std::wstring_view> patterns) {
  std::vector<std::pair<std::size_t, std::wstring>> found;  // the pattern's place, the path
  const std::unique_ptr<DIR, DirectoryCloser> stream(::opendir(Narrow(directory).c_str()));
  while (const dirent* const entry = stream != nullptr ? ::readdir(stream.get()) : nullptr) {
    std::string_view name = entry->d_name;
    if (!name.ends_with(".so")) continue;
    name.remove_suffix(3);
    for (std::size_t i = 0; i < patterns.size(); ++i) {
      if (::fnmatch(Narrow(patterns[i]).c_str(), std::string(name).c_str(), 0) != 0) continue;
      found.emplace_back(i, directory + Widen(entry->d_name));
      break;
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<std::wstring> paths;
  for (auto& [place, path] : found) paths.push_back(std::move(path));
  return paths;
}

ModuleSearchScope::ModuleSearchScope(const std::wstring&) {}
ModuleSearchScope::~ModuleSearchScope() = default;

MediaFrameworks ProbeMediaFrameworks() { return {}; }

}  // namespace Quorvex::platform
