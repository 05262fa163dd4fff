// A plug-in module: a reader and a writer for a toy format, files of the extension "toy" that hold
// 16-bit little-endian samples of one channel at 8000 Hz and nothing else. Put it beside the
// library and every application can open such files.
#include <MediaAccessor/all.h>
#include <MediaAccessor/plugin.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Quorvex;

constexpr unsigned long kFrequency = 8000;
constexpr std::size_t kBlockFrames = 1000;

unsigned long Copy(std::wstring_view text, wchar_t* buffer, unsigned long capacity) {
  if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(text.size()) + 1;
  text = text.substr(0, capacity - 1);
  *std::copy(text.begin(), text.end(), buffer) = L'\0';
  return static_cast<unsigned long>(text.size()) + 1;
}

// Wide text is UTF-32 on Linux, where a path made of wchar_t would depend on the locale.
std::filesystem::path PathOf(std::wstring_view text) {
  if constexpr (sizeof(wchar_t) == sizeof(char32_t)) {
    return std::u32string(text.begin(), text.end());
  } else {
    return text;
  }
}

class ToyFile final : public MultiChannelMediaFile {
 public:
  using MultiChannelMediaFile::GetDescription;

  unsigned long GetSamplingFrequency() const override { return frames_ > 0 ? kFrequency : 0; }
  int GetTrackChannelCount() const override { return 1; }
  unsigned long GetMilliseconds() const override {
    return static_cast<unsigned long>(frames_ * 1000 / kFrequency);
  }
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return Copy(L"Toy Format", buffer, capacity);
  }

 protected:
  QVERRORCODE_TAG OpenFormat(const wchar_t* path) override {
    const std::filesystem::path file = PathOf(path);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    if (error) return QVERR_FILE_OPEN_FAILED;
    if (size == 0 || size % sizeof(short) != 0) return QVERR_BAD_FORMAT;
    stream_.open(file, std::ios::binary);
    if (!stream_) return QVERR_FILE_OPEN_FAILED;
    frames_ = size / sizeof(short);
    block_.resize(kBlockFrames);
    return QVERR_OK;
  }

  void CloseFormat() override {
    stream_.close();
    stream_.clear();
    frames_ = 0;
  }

  QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames, void*) override {
    stream_.read(reinterpret_cast<char*>(block_.data()), kBlockFrames * sizeof(short));
    if (stream_.bad()) return QVERR_FILE_IO;
    samples = block_.data();
    frames = static_cast<unsigned long>(stream_.gcount()) / sizeof(short);
    return QVERR_OK;
  }

 private:
  std::ifstream stream_;
  std::uintmax_t frames_ = 0;
  std::vector<short> block_;
};

class ToyFactory final : public CMediaFileFactory {
 public:
  using CMediaFileFactory::GetDescription;
  using CMediaFileFactory::GetExtension;

  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return Copy(L"Toy Format", buffer, capacity);
  }
  unsigned long GetExtensionCount() const override { return 1; }
  unsigned long GetExtension(unsigned long index, wchar_t* buffer,
                             unsigned long capacity) const override {
    if (index != 0) return 0;
    if (buffer != nullptr) Copy(L"toy", buffer, capacity);
    return 3;
  }
  CMediaFile* CreateMediaFile() const override { return new ToyFile; }
};

class ToyWriter final : public CMediaFileWriter {
 public:
  QVERRORCODE_TAG SetChannelCount(int channels) override {
    return channels == 1 ? QVERR_OK : QVERR_MONO_ONLY;
  }
  QVERRORCODE_TAG Write(const void* samples, unsigned long count) override {
    stream_.write(static_cast<const char*>(samples),
                  static_cast<std::streamsize>(count * sizeof(short)));
    return stream_ ? QVERR_OK : QVERR_FILE_WRITE_FAILED;
  }

  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const char* path, bool replace) override {
    return Guarded([&] { return WriteAll(source, path != nullptr ? path : "", replace); });
  }
  QVERRORCODE_TAG WriteFile(CMediaAccessor* source, const wchar_t* path, bool replace) override {
    return Guarded([&] { return WriteAll(source, PathOf(path != nullptr ? path : L""), replace); });
  }

 private:
  // Applications call a writer themselves, so nothing may be thrown to them.
  template <class Operation>
  static QVERRORCODE_TAG Guarded(const Operation& operation) {
    try {
      return operation();
    } catch (...) {
      return QVERR_CREATE_FAILED;
    }
  }

  QVERRORCODE_TAG WriteAll(CMediaAccessor* source, const std::filesystem::path& path,
                           bool replace) {
    if (source == nullptr) return QVERR_NO_SOURCE;
    if (path.empty()) return QVERR_BAD_FILE_NAME;
    std::error_code error;
    if (!replace && std::filesystem::exists(path, error)) return QVERR_FILE_CREATE_FAILED;
    QVERRORCODE_TAG result = SetChannelCount(static_cast<int>(source->GetChannelCount()));
    if (result != QVERR_OK) return result;
    stream_.open(path, std::ios::binary);
    if (!stream_) return QVERR_FILE_CREATE_FAILED;
    const short* samples = nullptr;
    unsigned long frames = 0;
    do {
      result = source->ReadBlock(samples, frames);
      if (result == QVERR_OK) result = Write(samples, frames);
    } while (result == QVERR_OK && frames > 0);
    stream_.close();
    return result == QVERR_OK && !stream_ ? QVERR_FILE_WRITE_FAILED : result;
  }

  std::ofstream stream_;
};

}  // namespace

unsigned long GetOptionalLibraryVersion() { return Quorvex::kPluginInterfaceVersion; }

unsigned long GetOptionalFactoryCount() { return 1; }

unsigned long GetOptionalFactories(const Quorvex::CMediaFileFactory** factories,
                                   unsigned long capacity) {
  static const auto& factory = *new ToyFactory;  // outlives every static object
  if (capacity > 0) factories[0] = &factory;
  return std::min(capacity, 1UL);
}

Quorvex::CMediaFileWriter* GetFFmpegWriterInstance() { return new ToyWriter; }
