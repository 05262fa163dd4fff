// CMediaFileWriter: writes everything that an accessor delivers into a file.
#pragma once

#include <MediaAccessor/media_sink.h>

namespace Quorvex {

class CMediaAccessor;

/// A writer of one file format. Slots 0 to 3 are CMediaSink's, the two WriteFile follow.
class MEDIA_ACCESSOR_API CMediaFileWriter : public CMediaSink {
 public:
  CMediaFileWriter();
  ~CMediaFileWriter() override;

  /// Pulls the source to its end and writes it into a new file.
  /// @param source   not owned; read to its end.
  /// @param path     null counts as empty.
  /// @param replace  whether an existing file is replaced; when it is false and the file exists,
  ///                 the result is QVERR_FILE_CREATE_FAILED and the file is left alone.
  /// @return QVERR_OK; QVERR_NO_SOURCE for a null source; QVERR_BAD_FILE_NAME for an empty path;
  ///         the source's failure as it is; the format's own codes.
  virtual QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const char* path, bool replace) = 0;
  /// The same for a wide path.
  virtual QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const wchar_t* path, bool replace) = 0;
};

}  // namespace Quorvex
