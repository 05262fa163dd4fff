// Modules over dlopen and dladdr.
#include "platform/module.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fnmatch.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <utility>

#include "platform/posix/file_name.h"
#include "platform/text.h"

namespace Quorvex::platform {
namespace {

constexpr std::size_t kLongestOwnPath = 1000;

// The file that is mapped at an address, by the kernel's list of mappings:
//     start-end access offset device inode     path
std::string MappedFile(const void* address) {
  std::ifstream mappings("/proc/self/maps");
  for (std::string line; std::getline(mappings, line);) {
    std::uintptr_t start = 0;
    std::uintptr_t end = 0;
    char dash = 0;
    std::istringstream(line) >> std::hex >> start >> dash >> end;
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    const std::size_t path = line.find('/');
    if (start <= wanted && wanted < end && path != std::string::npos) return line.substr(path);
  }
  return {};
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
  const auto* const address = reinterpret_cast<const void*>(&OwnModuleDirectory);
  Dl_info information{};
  if (::dladdr(address, &information) == 0) return {};
  std::string path = information.dli_fname;
  // A path that was relative when the module was loaded says nothing by now.
  if (!path.starts_with('/')) path = MappedFile(address);
  const std::wstring wide = Widen(path);
  return wide.size() <= kLongestOwnPath ? wide.substr(0, wide.find_last_of(L'/') + 1) : L"";
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
