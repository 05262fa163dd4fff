// Stand-ins for what an application derives: a source, a sink, a file, a factory. They police their
// contracts: a source that is read after its end fails the test.
#pragma once

#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tests {

inline unsigned long CopyWide(const std::wstring& text, wchar_t* buffer, unsigned long capacity) {
  if (buffer == nullptr || capacity == 0) return static_cast<unsigned long>(text.size()) + 1;
  const std::wstring cut = text.substr(0, capacity - 1);
  std::copy_n(cut.c_str(), cut.size() + 1, buffer);
  return static_cast<unsigned long>(cut.size()) + 1;
}

/// Delivers given blocks, then the end or a failure.
class FakeSource : public Quorvex::CMediaAccessor {
 public:
  FakeSource(unsigned long channels, std::vector<std::vector<short>> blocks)
      : channels_(channels), blocks_(std::move(blocks)) {}

  unsigned long GetSamplingFrequency() const override { return frequency; }
  unsigned long GetChannelCount() const override { return channels_; }
  bool IsFlagged() const override { return flagged; }
  Quorvex::QVERRORCODE_TAG ReadBlock(const short*& samples, unsigned long& frames,
                                     void* context) override {
    samples = nullptr;
    frames = 0;
    lastContext = context;
    if (next_ < blocks_.size()) {
      samples = blocks_[next_].data();
      frames = static_cast<unsigned long>(blocks_[next_].size() / channels_);
      ++next_;
      return Quorvex::QVERR_OK;
    }
    if (next_ > blocks_.size()) ADD_FAILURE() << "read again after the end";
    ++next_;
    return atEnd;
  }
  using CMediaAccessor::GetDescription;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyWide(L"Fake source", buffer, capacity);
  }

  void SetChannelCount(unsigned long channels) { channels_ = channels; }

  unsigned long frequency = 8000;
  bool flagged = false;
  Quorvex::QVERRORCODE_TAG atEnd = Quorvex::QVERR_OK;
  void* lastContext = nullptr;

 private:
  unsigned long channels_;
  std::vector<std::vector<short>> blocks_;
  std::size_t next_ = 0;
};

/// Writes down what it is told. `sampleBytes` is the size of what it is pushed, for a count.
class FakeSink : public Quorvex::CMediaSink {
 public:
  Quorvex::QVERRORCODE_TAG SetChannelCount(int channels) override {
    channelCounts.push_back(channels);
    return result;
  }
  Quorvex::QVERRORCODE_TAG Write(const void* data, unsigned long count) override {
    counts.push_back(count);
    if (data != nullptr && count > 0) {
      const auto* samples = static_cast<const short*>(data);
      written.insert(written.end(), samples, samples + count / 2);
    }
    return result;
  }

  std::vector<int> channelCounts;
  std::vector<unsigned long> counts;
  std::vector<short> written;
  Quorvex::QVERRORCODE_TAG result = Quorvex::QVERR_OK;
};

/// What a FakeFile does, and what was done with it.
struct FakeFormat {
  std::wstring description = L"Fake Format";
  std::vector<std::wstring> extensions;
  Quorvex::QVERRORCODE_TAG openResult = Quorvex::QVERR_OK;
  bool createsNull = false;
  bool throwsInCreate = false;
  bool throwsInOpen = false;
  bool throwsAfterOpen = false;  // in the channel count
  bool flagged = false;
  int channels = 2;
  unsigned long frequency = 8000;
  unsigned long estimate = 0;
  int defaultMode = Quorvex::kChannelModeAverage;
  std::vector<std::vector<short>> blocks;
  Quorvex::QVERRORCODE_TAG atEnd = Quorvex::QVERR_OK;
  int opened = 0;
  int closed = 0;
  int alive = 0;
  int reads = 0;
};

class FakeFile : public Quorvex::MultiChannelMediaFile {
 public:
  explicit FakeFile(FakeFormat& format) : format_(format) { ++format_.alive; }
  ~FakeFile() override { --format_.alive; }

  unsigned long GetSamplingFrequency() const override { return format_.frequency; }
  bool IsFlagged() const override { return format_.flagged; }
  int GetTrackChannelCount() const override {
    if (format_.throwsAfterOpen) throw std::runtime_error("channels");
    return format_.channels;
  }
  unsigned long GetMilliseconds() const override { return format_.estimate; }
  int GetDefaultChannelMode() const override { return format_.defaultMode; }
  using MultiChannelMediaFile::GetDescription;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyWide(format_.description, buffer, capacity);
  }
  using MultiChannelMediaFile::GetFormatDescription;
  unsigned long GetFormatDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyWide(L"fake encoding", buffer, capacity);
  }

 protected:
  Quorvex::QVERRORCODE_TAG OpenFormat(const wchar_t*) override {
    if (format_.throwsInOpen) throw std::runtime_error("open");
    if (format_.openResult == Quorvex::QVERR_OK) ++format_.opened;
    next_ = 0;
    return format_.openResult;
  }
  void CloseFormat() override { ++format_.closed; }
  Quorvex::QVERRORCODE_TAG ReadRawBlock(const short*& samples, unsigned long& frames,
                                        void*) override {
    ++format_.reads;
    if (next_ == format_.blocks.size()) return format_.atEnd;
    const auto& block = format_.blocks[next_++];
    samples = block.data();
    frames =
        static_cast<unsigned long>(block.size()) / static_cast<unsigned long>(format_.channels);
    return Quorvex::QVERR_OK;
  }

 private:
  FakeFormat& format_;
  std::size_t next_ = 0;
};

class FakeFactory : public Quorvex::CMediaFileFactory {
 public:
  explicit FakeFactory(std::vector<std::wstring> extensions = {}) {
    format.extensions = std::move(extensions);
  }

  using CMediaFileFactory::GetDescription;
  using CMediaFileFactory::GetExtension;
  unsigned long GetDescription(wchar_t* buffer, unsigned long capacity) const override {
    return CopyWide(format.description, buffer, capacity);
  }
  unsigned long GetExtensionCount() const override {
    return static_cast<unsigned long>(format.extensions.size());
  }
  unsigned long GetExtension(unsigned long index, wchar_t* buffer,
                             unsigned long capacity) const override {
    if (index >= format.extensions.size()) return 0;
    if (buffer != nullptr) CopyWide(format.extensions[index], buffer, capacity);
    return static_cast<unsigned long>(format.extensions[index].size());
  }
  Quorvex::CMediaFile* CreateMediaFile() const override {
    if (format.throwsInCreate) throw std::runtime_error("create");
    return format.createsNull ? nullptr : new FakeFile(format);
  }

  mutable FakeFormat format;
};

/// Everything that an accessor delivers; a failure is added to the test.
inline std::vector<short> PullAll(Quorvex::CMediaAccessor& accessor) {
  std::vector<short> all;
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    const Quorvex::QVERRORCODE_TAG result = accessor.ReadBlock(samples, frames);
    EXPECT_EQ(result, Quorvex::QVERR_OK);
    if (result != Quorvex::QVERR_OK || frames == 0) return all;
    all.insert(all.end(), samples, samples + frames * accessor.GetChannelCount());
  }
}

/// The frames of each block up to the end.
inline std::vector<unsigned long> BlockSizes(Quorvex::CMediaAccessor& accessor) {
  std::vector<unsigned long> sizes;
  for (;;) {
    const short* samples = nullptr;
    unsigned long frames = 0;
    EXPECT_EQ(accessor.ReadBlock(samples, frames), Quorvex::QVERR_OK);
    if (frames == 0) return sizes;
    sizes.push_back(frames);
  }
}

template <class Object>
std::wstring WideDescription(const Object& object) {
  return Quorvex::TextOf<wchar_t>([&](wchar_t* buffer, unsigned long capacity) {
    return object.GetDescription(buffer, capacity);
  });
}

}  // namespace tests
