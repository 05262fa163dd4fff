// Draws the progress line at most a few times a second.
#include "tools/progress.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/console.h"

namespace media_accessor_tool {
namespace {

constexpr std::chrono::milliseconds kInterval{200};
constexpr const char* kWipeLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string name, unsigned long long totalMilliseconds)
    : name_(std::move(name)),
      total_(totalMilliseconds),
      isTerminal_(Quorvex::platform::IsTerminal(stderr)),
      next_(Clock::now() + kInterval) {}

void Progress::End() {
  if (std::exchange(shown_, false)) std::fputs(kWipeLine, stderr);
}

void Progress::Show(unsigned long long doneMilliseconds) {
  if (!isTerminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  shown_ = true;
  if (total_ > 0) {
    std::fprintf(stderr, "%s%s: %llu %%", kWipeLine, name_.c_str(),
                 std::min(doneMilliseconds * 100 / total_, 100ULL));
  } else {
    std::fprintf(stderr, "%s%s: %llu s", kWipeLine, name_.c_str(), doneMilliseconds / 1000);
  }
  std::fflush(stderr);
}

}  // namespace media_accessor_tool
