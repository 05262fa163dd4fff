// The Sun AU reader: files of Sun and NeXT workstations.
#pragma once

#include <MediaAccessor/result_code.h>

#include "formats/au/au_samples.h"
#include "support/header_reader.h"
#include "support/unit_media_file.h"

namespace Quorvex {

class CMediaFileFactory;

/// The facts of an AU file that the reader accepts.
struct AUHeader {
  UnitAudio audio;  // a unit is a frame
  std::uint32_t encoding = 0;
};

/// Reads the header. @return QVERR_OK; QVERR_FILE_OPEN_FAILED when there are not 24 bytes of it;
/// QVERR_BAD_FORMAT for anything that the reader does not take; of an AU file `encoding` is set
/// anyway.
QVERRORCODE_TAG ParseAUHeader(HeaderReader& reader, AUHeader& header);

/// What a number in the encoding field stands for, decoded or not.
const wchar_t* AUEncodingName(std::uint32_t encoding) noexcept;

/// The format's factory.
const CMediaFileFactory& AUMediaFileFactory();

}  // namespace Quorvex
