// A file that a command reads under watch.
#pragma once

#include <MediaAccessor/media_accessor_decorator.h>
#include <MediaAccessor/media_file.h>

#include <string>

#include "tools/progress.h"

namespace media_accessor_tool {

/// The innermost accessor of a command's chain: passes a file's blocks on, shows how far it is, and
/// ends early on an interrupt.
class WatchedFile final : public Quorvex::CMediaAccessorDecorator {
 public:
  /// @param file  open, its channels chosen; not owned.
  WatchedFile(Quorvex::CMediaFile& file, const std::string& name);

  Quorvex::QVERRORCODE_TAG SetSource(Quorvex::CMediaAccessor* source) override;
  /// QVERR_BAD_STATE after an interrupt.
  Quorvex::QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                                     void* context = nullptr) override;
  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override;

  /// The length of what was read so far.
  unsigned long long Milliseconds() const;
  /// What the file itself answered to the last read.
  Quorvex::QVERRORCODE_TAG Result() const { return result_; }
  /// Makes room for other lines on a terminal.
  void EndProgress() { progress_.End(); }

 private:
  Progress progress_;
  unsigned long long frames_ = 0;
  Quorvex::QVERRORCODE_TAG result_ = Quorvex::QVERR_OK;
};

}  // namespace media_accessor_tool
