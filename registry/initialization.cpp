// Initialisation in its four forms, and the version.
#include "registry/initialization.h"

#include <MediaAccessor/input_wav_media_file.h>
#include <MediaAccessor/library.h>

#include "platform/module.h"
#include "registry/built_in_factories.h"
#include "registry/factory_registry.h"
#include "registry/plugin_modules.h"
#include "support/ft_log.h"
#include "support/licence_policy.h"
#include "support/no_throw.h"
#include "support/text.h"

namespace Quorvex {
namespace {

constexpr int kMajor = 9;
constexpr int kMinor = 0;
constexpr int kBuild = 0;
constexpr int kRevision = 288;

// The revision stands at its end once more on purpose: readers of the text rely on it.
constexpr std::wstring_view kVersionText = L"9.0.0.288 (185833).288";

template <class Character>
bool HasText(const Character* text) {
  return text != nullptr && *text != Character{};
}

}  // namespace

QVERRORCODE_TAG RegisterBuiltInFactories(FactoryRegistry& registry) {
  // The system's own readers would be registered first, to be tried last. There are none yet; where
  // a system has none of its own, the compression manager's takes their place.
  const platform::MediaFrameworks frameworks = platform::ProbeMediaFrameworks();
  if (frameworks.directShow)
    LibraryLog().Write(L"The system has DirectShow, which nothing here uses yet");
  if (frameworks.mediaFoundation)
    LibraryLog().Write(L"The system has Media Foundation, which nothing here uses yet");
  // Before the plug-in modules and the built-in formats, so that it is tried after them.
  if (!frameworks.belongToSystem) {
    const QVERRORCODE_TAG added = registry.AddUninitialized(CInputWAVMediaFile::Factory());
    if (added != QVERR_OK) return added;
  }
  // Whatever the plug-in modules do, the built-in formats are there.
  const QVERRORCODE_TAG result = NoThrow([&] { return RegisterPluginFactories(registry); });
  for (const CMediaFileFactory* factory : BuiltInFactories()) {
    const QVERRORCODE_TAG added = registry.AddUninitialized(*factory);
    if (added != QVERR_OK) return added;
  }
  return result;
}

QVERRORCODE_TAG InitializeMediaAccessorLibrary() noexcept {
  return NoThrow([] { return FactoryRegistry::Instance().Initialize(); });
}

QVERRORCODE_TAG InitializeMediaAccessorLibrary(const char* licensee, const char* key) noexcept {
  LicencePolicy::Instance().SetTexts(HasText(licensee), HasText(key));
  return InitializeMediaAccessorLibrary();
}

QVERRORCODE_TAG InitializeMediaAccessorLibrary(const wchar_t* licensee,
                                               const wchar_t* key) noexcept {
  LicencePolicy::Instance().SetTexts(HasText(licensee), HasText(key));
  return InitializeMediaAccessorLibrary();
}

QVERRORCODE_TAG InitializeMediaAccessorLibrary(MediaAccessorLicenceQuery query,
                                               MediaAccessorLicenceCheck check) noexcept {
  LicencePolicy::Instance().SetCallbacks(query, check);
  return InitializeMediaAccessorLibrary();
}

QVERRORCODE_TAG MediaAccessorGetLibraryVersion(int& major, int& minor, int& build,
                                               int& revision) noexcept {
  major = kMajor;
  minor = kMinor;
  build = kBuild;
  revision = kRevision;
  return QVERR_OK;
}

QVERRORCODE_TAG MediaAccessorGetLibraryVersion(wchar_t* buffer, unsigned long capacity) noexcept {
  CopyText(kVersionText, buffer, capacity);
  return QVERR_OK;
}

QVERRORCODE_TAG MediaAccessorGetLibraryVersion(char* buffer, unsigned long capacity) noexcept {
  CopyText(kVersionText, buffer, capacity);
  return QVERR_OK;
}

bool HasFFmpegWriter() noexcept {
  InitializeMediaAccessorLibrary();
  return GetPluginWriterEntry() != nullptr;
}

CMediaFileWriter* CreateFFmpegWriterInstance() noexcept {
  if (!HasFFmpegWriter()) return nullptr;
  return NoThrowOr(static_cast<CMediaFileWriter*>(nullptr),
                   [] { return GetPluginWriterEntry()(); });
}

}  // namespace Quorvex
