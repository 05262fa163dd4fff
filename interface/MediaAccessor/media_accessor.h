// CMediaAccessor: the pull side of the library. A block that is read is always interleaved signed
// 16-bit PCM, counted in frames (one sample of every channel).
#pragma once

#include <MediaAccessor/export.h>
#include <MediaAccessor/result_code.h>

namespace Quorvex {

/// A source of audio blocks. Derive from it to feed audio of your own into the library.
///
/// Ownership: whoever receives an accessor from a CreateInstance() or a factory ends it with
/// Release(). Threads: an object is used by one thread at a time.
///
/// The order of the virtual operations is binary interface: slots 0 to 9.
class MEDIA_ACCESSOR_API CMediaAccessor {
 public:
  CMediaAccessor();
  virtual ~CMediaAccessor();
  CMediaAccessor(const CMediaAccessor&) = delete;
  CMediaAccessor& operator=(const CMediaAccessor&) = delete;

  /// Frequency of the delivered samples in Hz; 0 when unknown (closed file, no source).
  virtual unsigned long GetSamplingFrequency() const = 0;

  /// Number of interleaved channels in a delivered block; 0 when unknown.
  virtual unsigned long GetChannelCount() const = 0;

  /// True when this accessor may be read only by whoever opened it: decorators refuse it as their
  /// source (QVERR_INVALID_ARGUMENT) and MediaFileOpen can be told to refuse such a file. A
  /// decorator gives its source's answer, so that the query reaches the innermost accessor. The
  /// library's own readers, and this base, answer false.
  virtual bool IsFlagged() const;

  /// Reads the next block.
  /// @param samples  receives the block, null at the end or on failure. It belongs to the accessor
  ///                 and is valid until the next call of any operation that is not const.
  /// @param frames   receives the number of frames. 0 with QVERR_OK is the end of the stream; more
  ///                 calls give the same again, unless the accessor says otherwise.
  /// @param context  handed on unchanged to the innermost accessor; the library gives it no
  /// meaning.
  /// @return QVERR_OK; QVERR_FILE_NOT_OPEN from a closed file; QVERR_NO_SOURCE from a decorator
  ///         without a source; whatever the source or the format reports, for the built-in formats
  ///         see media_file_functions.h. Both outputs are cleared
  ///         first, so they are null and 0 on every failure.
  virtual QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                                    void* context = nullptr) = 0;

  /// Describes the accessor: a file gives its format's name ("Portable WAV Format"), a decorator a
  /// sentence with its source's description in it. Text rule: text.h.
  virtual unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const = 0;
  /// The same as narrow text; here the wide text, converted.
  virtual unsigned long GetDescription(char* buffer, unsigned long capacity) const;

  /// Names the kind of the accessor: a file gives the encoding of its audio ("CCITT A-Law"), the
  /// mixer its own name; here the wide text of the next operation, converted. Text rule: text.h.
  virtual unsigned long GetTypeDescription(char* buffer, unsigned long capacity) const;
  /// The same as wide text; here GetDescription.
  virtual unsigned long GetTypeDescription(wchar_t* buffer, unsigned long capacity) const;

  /// Ends the object; here `delete this`. It must not be called through a null pointer: the free
  /// function Release in ownership.h can be.
  virtual void Release();
};

}  // namespace Quorvex
