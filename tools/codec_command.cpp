// codec: the bare frames of a speech codec into raw 16-bit PCM, and the other way.
#include <MediaAccessor/ownership.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/console.h"
#include "tools/commands.h"
#include "tools/input.h"
#include "tools/output.h"
#include "tools/progress.h"

namespace media_accessor_tool {
namespace {

using namespace Quorvex;

static_assert(std::endian::native == std::endian::little, "samples are passed on as they stand");

struct Codec {
  const char* name;
  long bitRate;                // bit/s, unless told otherwise; 0: has to be told
  std::vector<long> bitRates;  // those that it has
  IPPCoder::CODEC codec;
  bool isCoded;
  bool isMixed = false;  // frames tell their length, and one decoder takes all
};

const Codec kCodecs[] = {
    {"g729a", 8000, {8000}, IPPCoder::G729A, true},
    {"g729a-headered", 8000, {8000}, IPPCoder::G729A_HEADERED, true},
    {"g723-53", 5300, {5300}, IPPCoder::G723_1_53, true, true},
    {"g723-63", 6300, {6300}, IPPCoder::G723_1_63, true, true},
    {"g722", 64000, {64000, 56000, 48000}, IPPCoder::G722, false},
    {"g722-1", 0, {24000, 32000}, IPPCoder::G722_1, false},
};

constexpr std::size_t kMostBlock = 65536;

// What a coder makes, on its way into the output, which is opened when there is something: data
// that fails at once leaves an earlier output as it was.
class OutputSink final : public CMediaSink {
 public:
  /// @param unit  bytes of what the coder counts.
  OutputSink(const std::string& path, std::size_t unit) : path_(path), unit_(unit) {}

  QVERRORCODE_TAG SetChannelCount(int) override { return QVERR_OK; }
  QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    Open();
    isWritten_ = isWritten_ && output_.Write(data, count * unit_);
    if (isWritten_) bytes_ += count * unit_;
    return isWritten_ ? QVERR_OK : QVERR_FILE_WRITE_FAILED;
  }

  void Open() {
    if (!isOpened_) isWritten_ = output_.Open(path_);
    isOpened_ = true;
  }
  bool Finish() { return output_.Finish(); }
  bool HasFailed() const { return !isWritten_; }
  unsigned long long Bytes() const { return bytes_; }

 private:
  const std::string path_;
  const std::size_t unit_;
  Output output_;
  bool isOpened_ = false;
  bool isWritten_ = true;
  unsigned long long bytes_ = 0;
};

// What a direction makes of the input.
struct Stream {
  std::size_t block;      // bytes that are taken at once
  double bytesPerSecond;  // of the input
};

bool ReportUnreadable(const std::string& input) {
  ReportError(input, std::string("cannot be read: ") + std::strerror(errno));
  return false;
}

// Gives the whole input to a coder, then an empty block. False after a failure, which is reported.
template <class Take>
bool Feed(const CodecOptions& options, const Stream& stream, const OutputSink& sink,
          const Take& take) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      std::fopen(options.input.c_str(), "rb"), &std::fclose);
  if (file == nullptr) return ReportUnreadable(options.input);
  std::error_code error;
  const auto size = std::filesystem::file_size(platform::ArgumentPath(options.input), error);
  const auto milliseconds = [&stream](auto bytes) {
    return static_cast<unsigned long long>(static_cast<double>(bytes) * 1000 /
                                           stream.bytesPerSecond);
  };
  Progress progress(Printable(options.input), error ? 0 : milliseconds(size));
  std::vector<unsigned char> block(stream.block);
  unsigned long long done = 0;
  QVERRORCODE_TAG result = QVERR_OK;
  std::size_t count = 0;
  do {
    count = std::fread(block.data(), 1, block.size(), file.get());
    if (std::ferror(file.get()) != 0) {
      progress.End();
      return ReportUnreadable(options.input);
    }
    result = take(std::span<const unsigned char>(block.data(), count));
    done += count;
    progress.Show(milliseconds(done));
  } while (result == QVERR_OK && count > 0);
  progress.End();
  if (result != QVERR_OK && !sink.HasFailed()) ReportFailure(options.input, result);
  return result == QVERR_OK;
}

template <class Take>
int Run(const CodecOptions& options, const Stream& stream, OutputSink& sink, const Take& take) {
  const bool isTaken = Feed(options, stream, sink, take);
  if (isTaken) sink.Open();  // an empty input has an empty output
  if (!isTaken && sink.Bytes() > 0) {
    ReportError(options.input,
                "stopped after " + std::to_string(sink.Bytes()) + " bytes of output");
  }
  return sink.Finish() && isTaken ? kAllWentWell : kSomeFileFailed;
}

int Refuse(const CodecOptions& options, const std::string& why, ExitCode code = kSomeFileFailed) {
  ReportError("--codec " + options.codec, why);
  return code;
}

constexpr const char* kAbsent = "this codec is not in the library";

// Gives a decoder of G.723.1 its frames one by one.
class FrameByFrame {
 public:
  explicit FrameByFrame(IPPDecoder& decoder) : decoder_(decoder) {}

  /// @param block  any bytes of the stream; none at its end.
  QVERRORCODE_TAG Decode(std::span<const unsigned char> block) {
    QVERRORCODE_TAG result = QVERR_OK;
    if (block.empty()) result = DecodeFrame();
    for (std::size_t i = 0; i < block.size() && result == QVERR_OK; ++i) {
      frame_.push_back(block[i]);
      if (frame_.size() == LengthOf(frame_.front())) result = DecodeFrame();
    }
    return result;
  }

 private:
  static std::size_t LengthOf(unsigned char firstByte) {
    return static_cast<std::size_t>(IPPCoder::G7231FrameBytes(firstByte));
  }
  QVERRORCODE_TAG DecodeFrame() {
    const QVERRORCODE_TAG result =
        decoder_.Decode(frame_.data(), static_cast<std::uint32_t>(frame_.size()));
    frame_.clear();
    return result;
  }

  IPPDecoder& decoder_;
  std::vector<unsigned char> frame_;  // as far as it has come
};

int Decode(const CodecOptions& options, const Codec& codec, long bitRate) {
  const IPPCoder::CODEC decoded = codec.isMixed ? IPPCoder::G723_1_63 : codec.codec;
  const IPPDecoderPtr decoder(IPPDecoder::CreateInstance(decoded, bitRate));
  if (decoder == nullptr) return Refuse(options, kAbsent);
  OutputSink sink(options.output, sizeof(short));
  decoder->SetSink(&sink);
  const auto frame = static_cast<std::uint32_t>(decoder->GetCompressedFrameBytes());
  const double seconds =
      static_cast<double>(decoder->SamplesForBytes(frame)) / decoder->GetCodecSampleRate();
  FrameByFrame mixed(*decoder);
  return Run(options, {kMostBlock / frame * frame, frame / seconds}, sink, [&](auto block) {
    if (codec.isMixed) return mixed.Decode(block);
    return decoder->Decode(block.data(), static_cast<std::uint32_t>(block.size()));
  });
}

int Encode(const CodecOptions& options, const Codec& codec) {
  const IPPEncoderPtr encoder(IPPEncoder::CreateInstance(codec.codec));
  if (encoder == nullptr) return Refuse(options, kAbsent);
  OutputSink sink(options.output, 1);
  encoder->SetSink(&sink);
  const double bytesPerSecond = encoder->GetCodecSampleRate() * static_cast<double>(sizeof(short));
  bool isOdd = false;
  const int code = Run(options, {kMostBlock, bytesPerSecond}, sink, [&](auto block) {
    isOdd = isOdd || block.size() % sizeof(short) != 0;
    return encoder->Write(block.data(), static_cast<unsigned long>(block.size() / sizeof(short)));
  });
  if (isOdd) ReportError(options.input, "has an odd number of bytes: half a sample was left out");
  return isOdd ? kSomeFileFailed : code;
}

}  // namespace

std::vector<std::string> CodecNames() {
  std::vector<std::string> names;
  for (const Codec& codec : kCodecs) names.emplace_back(codec.name);
  return names;
}

int RunCodec(const CodecOptions& options) {
  if (IsSameFile(options.input, options.output)) return kWrongUsage;
  const Codec& codec = *std::ranges::find(kCodecs, options.codec, &Codec::name);
  const bool isEncoded = options.direction == "encode";
  if (isEncoded && !codec.isCoded) return Refuse(options, "this codec is decoded only");
  const long bitRate = options.bitRate != 0 ? options.bitRate : codec.bitRate;
  if (std::ranges::count(codec.bitRates, bitRate) == 0) {
    std::string list;
    for (const long known : codec.bitRates) {
      list += (list.empty() ? "" : " or ") + std::to_string(known);
    }
    const std::string why =
        bitRate == 0 ? "needs a --bit-rate: " + list
                     : "--bit-rate has to be " + list + ", not " + std::to_string(bitRate);
    return Refuse(options, why, kWrongUsage);
  }
  if (!IPPCoder::IsLicensedCodec(codec.codec)) {
    ReportFailure("--codec " + options.codec, QVERR_NOT_LICENSED);
    return kSomeFileFailed;
  }
  return isEncoded ? Encode(options, codec) : Decode(options, codec, bitRate);
}

}  // namespace media_accessor_tool
