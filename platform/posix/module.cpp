// Modules over dlopen and dladdr.
#include "platform/module.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fnmatch.h>
#include <limits.h>
#include <link.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <utility>

#include "platform/posix/file_name.h"
#include "platform/text.h"

namespace Quorvex::platform {
namespace {

constexpr std::size_t kLongestOwnPath = 1000;

// What the loader keeps about the module that an address is in; null when it is in none.
link_map* MapOf(const void* address) {
  Dl_info information{};
  void* map = nullptr;
  if (::dladdr1(address, &information, &map, RTLD_DL_LINKMAP) == 0) return nullptr;
  return static_cast<link_map*>(map);
}

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
  struct stat status {};
  // A named pipe would be waited for.
  if (::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    error = L"not a regular file";
    return false;
  }
  handle_ = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ != nullptr) return true;
  const char* const reason = ::dlerror();
  error = Widen(reason != nullptr ? reason : "unknown reason");
  return false;
}

Module::Address Module::FindAddress(const char* name) const noexcept {
  if (handle_ == nullptr) return nullptr;
  void* const address = ::dlsym(handle_, name);
  // The search went on in what the module depends on, which may be a plug-in module too.
  void* own = nullptr;
  if (address == nullptr || ::dlinfo(handle_, RTLD_DI_LINKMAP, &own) != 0 ||
      MapOf(address) != own) {
    return nullptr;
  }
  return reinterpret_cast<Address>(address);
}

std::wstring OwnModuleDirectory() {
  link_map* const own = MapOf(reinterpret_cast<const void*>(&OwnModuleDirectory));
  if (own == nullptr) return {};
  // The loader's own words, since the path that it was told may be relative to a directory that the
  // process has left. About the program itself, which has no name, it only repeats argv[0].
  std::string directory;
  if (own->l_name[0] == '\0') {
    std::error_code error;
    directory = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  } else {
    char origin[PATH_MAX] = "";
    if (::dlinfo(own, RTLD_DI_ORIGIN, origin) == 0) directory = origin;
  }
  const std::wstring wide = Widen(directory);
  return wide.empty() || wide.size() > kLongestOwnPath ? L"" : wide + L'/';
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
  paths.reserve(found.size());
  for (auto& [place, path] : found) paths.push_back(std::move(path));
  return paths;
}

ModuleSearchScope::ModuleSearchScope(const std::wstring&) {}
ModuleSearchScope::~ModuleSearchScope() = default;

MediaFrameworks ProbeMediaFrameworks() { return {}; }

}  // namespace Quorvex::platform
