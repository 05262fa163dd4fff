// The parts of CMediaSink and CMediaFileWriter that are not abstract.
#include <MediaAccessor/media_file_writer.h>
#include <MediaAccessor/media_sink.h>

namespace Quorvex {

CMediaSink::CMediaSink() = default;
CMediaSink::~CMediaSink() = default;

void CMediaSink::Release() { delete this; }

CMediaFileWriter::CMediaFileWriter() = default;
CMediaFileWriter::~CMediaFileWriter() = default;

}  // namespace Quorvex
