// CMediaSink: the push side of the library.
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

/// A consumer of blocks. Derive from it to receive what a decoder or the mixer produces.
///
/// The unit of `count` in Write differs on purpose from one producer to the next: the mixer pushes
/// bytes, the G.711 decoder frames x 2, a speech decoder samples. The header of each producer says
/// which; an adapter of yours converts where two do not agree.
///
/// The order of the virtual operations is binary interface: slots 0 to 3. Threads: an object is
/// used by one thread at a time.
class MEDIA_ACCESSOR_API CMediaSink {
 public:
  CMediaSink();
  virtual ~CMediaSink();
  CMediaSink(const CMediaSink&) = delete;
  CMediaSink& operator=(const CMediaSink&) = delete;

  /// Tells the sink how many interleaved channels the data has.
  /// @return QVERR_OK, or the code with which the sink refuses the count.
  virtual QVERRORCODE_TAG SetChannelCount(int channels) = 0;

  /// Takes a block.
  /// @param data   belongs to the producer, valid during the call. Null with a count of 0 is the
  ///               end of the stream.
  /// @param count  in the producer's unit (see above).
  /// @return QVERR_OK, or the code with which the sink ends the transfer; producers pass it on.
  virtual QVERRORCODE_TAG Write(const void* data, unsigned long count) = 0;

  /// Ends the object; here `delete this`. The null-safe form is Release in ownership.h.
  virtual void Release();
};

}  // namespace Quorvex
