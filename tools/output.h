// Where a command's result goes: a file or standard output, with every failure noticed.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace media_accessor_tool {

/// A stream of bytes to a file or, for "-", to standard output. The first failure is reported on
/// standard error; after it everything is false.
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
  /// Ends the output. True only when everything has arrived.
  bool Finish();

 private:
  bool Fail();

  std::string name_;
  std::FILE* stream_ = nullptr;
};

}  // namespace media_accessor_tool
