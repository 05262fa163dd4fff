// Counts what a file delivers, in frames of the file.
#include "tools/watched_file.h"

#include "platform/console.h"
#include "tools/input.h"

namespace media_accessor_tool {

using namespace Quorvex;

WatchedFile::WatchedFile(CMediaFile& file, const std::string& name)
    : progress_(Printable(name), file.GetMilliseconds()) {
  AttachSource(&file);
}

QVERRORCODE_TAG WatchedFile::SetSource(CMediaAccessor* source) { return AttachSource(source); }

QVERRORCODE_TAG WatchedFile::ReadBlock(const short*& samples, unsigned long& frames,
                                       void* context) {
  result_ = GetSource()->ReadBlock(samples, frames, context);
  if (result_ != QVERR_OK) return result_;
  frames_ += frames;
  progress_.Show(Milliseconds());
  if (!platform::IsInterrupted()) return QVERR_OK;
  samples = nullptr;
  frames = 0;
  return QVERR_BAD_STATE;
}

unsigned long WatchedFile::GetDescription(wchar_t* buffer, unsigned long capacity) const {
  return GetSource()->GetDescription(buffer, capacity);
}

unsigned long long WatchedFile::Milliseconds() const {
  const unsigned long frequency = GetSamplingFrequency();
  return frequency > 0 ? frames_ * 1000 / frequency : 0;
}

}  // namespace media_accessor_tool
