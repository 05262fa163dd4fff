// The audio that a command takes.
#pragma once

#include <MediaAccessor/ownership.h>

#include <optional>
#include <string>

#include "tools/commands.h"
#include "tools/watched_file.h"

namespace media_accessor_tool {

/// A chain of accessors: an open file with its channels chosen, under watch, resampled where
/// another frequency than its own is wanted. At its own frequency the samples pass as they are.
class Source {
 public:
  /// Opens the audio. What goes wrong is reported. To be called once.
  /// @param output  a file that must not be the input; "-" is none.
  /// @return kAllWentWell; kWrongUsage; kSomeFileFailed.
  int Open(const SourceOptions& options, const std::string& output);

  /// Where the audio is read; once it is open.
  Quorvex::CMediaAccessor& Audio();
  /// How much of the file was read, in milliseconds.
  unsigned long long Milliseconds() const { return watched_->Milliseconds(); }

  /// Makes room for other lines on a terminal.
  void EndProgress() { watched_->EndProgress(); }

  /// Says on standard error why reading failed.
  /// @param result  what whoever read it came to.
  /// @return false when the failure is not the audio's.
  bool Explain(Quorvex::QVERRORCODE_TAG result);

 private:
  Quorvex::QVERRORCODE_TAG BuildChain(int rate);

  std::string name_;
  // The chain from the inside outwards, so that the outermost ends first.
  Quorvex::MediaFilePtr file_;
  std::optional<WatchedFile> watched_;
  Quorvex::ResamplingMediaAccessorPtr resampler_;  // null: at the file's own frequency
};

}  // namespace media_accessor_tool
