// Output with its failures: a full disk and a closed pipe show at a write or only at the end.
#include "tools/output.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/console.h"
#include "tools/input.h"

namespace media_accessor_tool {

Output::~Output() {
  if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
}

bool Output::Open(const std::string& path) {
  const bool isStandard = path == "-";
  name_ = isStandard ? "standard output" : path;
  if (isStandard) Quorvex::platform::SetBinary(stdout);
  stream_ = isStandard ? stdout : std::fopen(path.c_str(), "wb");
  return stream_ != nullptr || Fail();
}

bool Output::Write(const void* data, std::size_t bytes) {
  if (stream_ == nullptr) return false;
  return std::fwrite(data, 1, bytes, stream_) == bytes || Fail();
}

bool Output::Finish() {
  if (stream_ != nullptr && std::fflush(stream_) != 0) Fail();
  if (std::FILE* const stream = std::exchange(stream_, nullptr); stream != nullptr) {
    if (stream != stdout && std::fclose(stream) != 0) Fail();
  }
  if (!failure_.empty()) ReportError(name_, failure_);
  return failure_.empty();
}

bool Output::Fail() {
  failure_ = std::string("cannot be written: ") + std::strerror(errno);
  if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
  stream_ = nullptr;
  return false;
}

}  // namespace media_accessor_tool
