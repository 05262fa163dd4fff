// Output with its failures: a full disk and a closed pipe show at a write or only at the end.
#include "tools/output.h"

#include <cerrno>
#include <cstring>

#include "platform/console.h"
#include "tools/input.h"

namespace media_accessor_tool {

Output::~Output() {
  if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
}

bool Output::Open(const std::string& path) {
  const bool isStandard = path == "-";
  name_ = isStandard ? "standard output" : path;
  if (isStandard) {
    Quorvex::platform::SetBinary(stdout);
    stream_ = stdout;
  } else {
    stream_ = std::fopen(path.c_str(), "wb");
  }
  return stream_ != nullptr || Fail();
}

bool Output::Write(const void* data, std::size_t bytes) {
  if (stream_ == nullptr) return false;
  return std::fwrite(data, 1, bytes, stream_) == bytes || Fail();
}

bool Output::Finish() {
  if (stream_ == nullptr) return false;
  if (std::fflush(stream_) != 0) return Fail();
  std::FILE* const stream = stream_;
  stream_ = nullptr;
  return stream == stdout || std::fclose(stream) == 0 || Fail();
}

bool Output::Fail() {
  ReportError(name_, std::string("cannot be written: ") + std::strerror(errno));
  if (stream_ != nullptr && stream_ != stdout) std::fclose(stream_);
  stream_ = nullptr;
  return false;
}

}  // namespace media_accessor_tool
