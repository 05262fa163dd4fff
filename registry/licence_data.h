// What the host gave the library to decide on the licensed speech codecs.
#pragma once

#include <string>

#include <MediaAccessor/library.h>

namespace Quorvex {

struct LicenceData {
  std::wstring licensee;
  std::wstring key;
  MediaAccessorLicenceQuery query = nullptr;
  MediaAccessorLicenceCheck check = nullptr;
};

/// Keeps the two texts, or the two callbacks; the other pair stays as it was. Any thread.
void StoreLicenceTexts(std::wstring licensee, std::wstring key);
void StoreLicenceCallbacks(MediaAccessorLicenceQuery query, MediaAccessorLicenceCheck check);

/// A copy of what is kept. Any thread.
LicenceData StoredLicenceData();

}  // namespace Quorvex
