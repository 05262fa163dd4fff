// Where a command's result goes: a file or standard output, with every failure noticed.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace media_accessor_tool {

/// A stream of bytes to a file or, for "-", to standard output. After the first failure everything
/// is false; Finish says on standard error what it was.
class Output {
 public:
  Output() = default;
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Creates or replaces the file.
  bool Open(const std::string& path);
  bool Write(const void* data, std::size_t bytes);
  bool Write(const std::string& text) { return Write(text.data(), text.size()); }
  /// Ends the output. True only when everything has arrived. To be called once, at the end, also
  /// after a failure.
  bool Finish();

 private:
  bool Fail();

  std::string name_;
  std::string failure_;  // empty: none so far
  std::FILE* stream_ = nullptr;
};

}  // namespace media_accessor_tool
