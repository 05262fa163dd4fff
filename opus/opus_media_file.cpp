// Container, packets, pre-skip and gain are libopusfile's: it is asked for samples, which it
// decodes at 48,000 Hz whatever was encoded, and reads the file through us. (Given the name, it
// cannot open every file: on Windows it gets characters beyond U+FFFF wrong.) A file may be a chain
// of streams, its links; they are read on as one.
#include "opus/opus_media_file.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <string_view>

#include "platform/input_file.h"
#include "platform/opus_file_library.h"
#include "support/built_in_media_file.h"
#include "support/built_in_media_file_factory.h"
#include "support/ft_log.h"

namespace Quorvex {
namespace {

constexpr std::uint32_t kFrequency = 48'000;  // Hz
constexpr int kBlockSamples = 2048;           // of all channels together
constexpr int kWholeFile = -1;                // where the library asks for the number of a link

constexpr std::wstring_view kFormatName = L"Opus media format";
constexpr std::wstring_view kExtensions[] = {L"OPUS"};

// The file as libopusfile reads it: with a position.
class OpusStream {
 public:
  bool Open(const wchar_t* path) {
    Rewind();
    return file_.Open(path);
  }
  void Rewind() noexcept { position_ = 0; }
  void Close() noexcept { file_.Close(); }

  // What libopusfile calls, with such an object.
  static int Read(void* object, unsigned char* bytes, int count) noexcept;
  static int Seek(void* object, opus_int64 offset, int whence) noexcept;
  static opus_int64 Tell(void* object) noexcept {
    return static_cast<OpusStream*>(object)->position_;
  }

 private:
  platform::InputFile file_;
  opus_int64 position_ = 0;
};

constexpr OpusFileCallbacks kSeekable = {
    .read = OpusStream::Read, .seek = OpusStream::Seek, .tell = OpusStream::Tell, .close = nullptr};
constexpr OpusFileCallbacks kReadOnly = {
    .read = OpusStream::Read, .seek = nullptr, .tell = nullptr, .close = nullptr};

// Whether libopusfile has passed over what it reports with a code, so that there is more to read.
bool IsPassedOver(int code) { return code == OP_HOLE || code == OP_EBADPACKET; }

int OpusStream::Read(void* object, unsigned char* bytes, int count) noexcept {
  auto& stream = *static_cast<OpusStream*>(object);
  std::size_t got = 0;
  const bool isRead = stream.file_.ReadAt(static_cast<std::uint64_t>(stream.position_), bytes,
                                          static_cast<std::size_t>(count), got);
  stream.position_ += static_cast<opus_int64>(got);
  return got > 0 || isRead ? static_cast<int>(got) : OP_EREAD;
}

int OpusStream::Seek(void* object, opus_int64 offset, int whence) noexcept {
  auto& stream = *static_cast<OpusStream*>(object);
  const auto size = static_cast<opus_int64>(stream.file_.Size());
  const opus_int64 from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? stream.position_ : size;
  // Nothing is beyond the end, which also keeps the sum from overflowing.
  if (offset < -from || offset > size - from) return -1;
  stream.position_ = from + offset;
  return 0;
}

class OpusMediaFileImpl final : public BuiltInMediaFile<> {
 public:
  OpusMediaFileImpl() = default;
  ~OpusMediaFileImpl() override { CloseFormat(); }
  OpusMediaFileImpl(const OpusMediaFileImpl&) = delete;
  OpusMediaFileImpl& operator=(const OpusMediaFileImpl&) = delete;

 protected:
  const AudioFacts& Facts() const override { return facts_; }
  std::wstring_view FormatName() const override { return kFormatName; }
  std::wstring EncodingName() const override { return L"Opus format"; }
  QVERRORCODE_TAG OpenAudio(const wchar_t* path) override;
  void CloseFormat() override;
  QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames, void*) override;

 private:
  OpusStream stream_;
  const platform::OpusFileFunctions* library_ = nullptr;  // set by the first open, and kept
  OggOpusFile* file_ = nullptr;                           // owned; null while closed
  AudioFacts facts_;
  bool isOver_ = false;  // after a failure that nothing follows
  short samples_[kBlockSamples];
};

QVERRORCODE_TAG OpusMediaFileImpl::OpenAudio(const wchar_t* path) {
  if (!stream_.Open(path)) return QVERR_FILE_OPEN_FAILED;
  std::wstring reason;
  library_ = platform::OpusFileLibrary(reason);
  if (library_ == nullptr) {
    LibraryLog().Write((L"Opus files cannot be read: " + reason).c_str());
    return QVERR_BAD_FORMAT;
  }
  file_ = library_->open(&stream_, &kSeekable, nullptr, 0, nullptr);
  if (file_ == nullptr) {
    // A chain whose last link is cut off in its headers: without a look at its end the links before
    // it can be read, and nobody knows how long they are.
    stream_.Rewind();
    file_ = library_->open(&stream_, &kReadOnly, nullptr, 0, nullptr);
  }
  if (file_ == nullptr) return QVERR_FILE_OPEN_FAILED;
  facts_.samplingFrequency = kFrequency;
  facts_.channels = library_->channelCount(file_, kWholeFile);
  const ogg_int64_t total = library_->pcmTotal(file_, kWholeFile);
  // Negative: not known.
  if (total > 0) {
    facts_.milliseconds = static_cast<unsigned long>(
        std::min<std::uint64_t>(static_cast<std::uint64_t>(total) / (kFrequency / 1000),
                                std::numeric_limits<unsigned long>::max()));
  }
  return QVERR_OK;
}

void OpusMediaFileImpl::CloseFormat() {
  if (file_ != nullptr) library_->free(file_);
  file_ = nullptr;
  stream_.Close();
  facts_ = {};
  isOver_ = false;
}

// A hole in the stream, or a link that cannot be delivered, is a failure of that read alone: a
// caller may read on with what comes after it. After any other failure comes the end, since
// libopusfile would report it for ever.
QVERRORCODE_TAG OpusMediaFileImpl::ReadRawBlock(const short*& samples, unsigned long& frames,
                                                void*) {
  if (isOver_) return QVERR_OK;
  int link = 0;
  const int count = library_->read(file_, samples_, kBlockSamples, &link);
  if (count < 0) {
    isOver_ = !IsPassedOver(count);
    return QVERR_BAD_FORMAT;
  }
  // The frames were counted with the channels of the link that they are from.
  if (count > 0 && library_->channelCount(file_, link) != facts_.channels) return QVERR_BAD_FORMAT;
  samples = samples_;
  frames = static_cast<unsigned long>(count);
  return QVERR_OK;
}

const BuiltInMediaFileFactoryOf<OpusMediaFileImpl> factory(kFormatName, kExtensions);

}  // namespace

const CMediaFileFactory& OpusMediaFileFactory() { return factory; }

}  // namespace Quorvex
