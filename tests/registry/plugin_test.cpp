// Plug-in modules as they are found: the example, and some that are not as they should be, stand
// beside a copy of the library. The working directory has one that must never be loaded.
#include <MediaAccessor/all.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/fake_media.h"
#include "tests/test_files.h"
#include "tests/test_system.h"

namespace {

using namespace Quorvex;

class Plugins : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    directory = new tests::TemporaryDirectory;
    std::filesystem::current_path(MEDIA_ACCESSOR_MODULES_ELSEWHERE);
    MediaAccessorSetLog(LogPath().c_str(), 0);
    initialized = InitializeMediaAccessorLibrary();
    log = ReadLog();
  }
  static void TearDownTestSuite() {
    MediaAccessorSetLog("", 0);
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    delete directory;
  }

  static std::string LogPath() { return directory->File("x.log"); }

  static std::vector<std::string> ReadLog() {
    std::vector<std::string> lines(1);
    const tests::Bytes bytes = tests::ReadBytes(LogPath());
    for (std::size_t i = 2; i < bytes.size(); i += 2) {
      if (bytes[i] == '\n') {
        lines.emplace_back();
      } else if (bytes[i] != '\r') {
        lines.back() += static_cast<char>(bytes[i]);
      }
    }
    lines.pop_back();
    return lines;
  }

  // What the log says about a module, without the module's directory.
  static std::string LogOf(const std::string& module) {
    std::string about;
    for (const std::string& line : log) {
      const std::size_t at = line.find(module + ".");
      if (at == std::string::npos) continue;
      const std::size_t colon = line.find(": ", at);
      about += line.substr(0, line.find(": ")) + line.substr(colon) + "\n";
    }
    return about;
  }

  static std::wstring Wide(const std::string& path) {
    const std::u32string text = tests::Path(path).u32string();
    std::wstring wide;
    for (const char32_t character : text) wide += static_cast<wchar_t>(character);
    return wide;
  }

  static std::vector<std::wstring> FactoryNames() {
    std::vector<std::wstring> names;
    for (unsigned long i = 0; i < GetMediaFileFactoryCount(); ++i) {
      const CMediaFileFactory* factory = nullptr;
      EXPECT_EQ(GetMediaFileFactory(i, factory), QVERR_OK);
      names.push_back(tests::WideDescription(*factory));
    }
    return names;
  }

  static tests::TemporaryDirectory* directory;
  static QVERRORCODE_TAG initialized;
  static std::vector<std::string> log;  // of the initialisation
};

tests::TemporaryDirectory* Plugins::directory = nullptr;
QVERRORCODE_TAG Plugins::initialized = QVERR_OK;
std::vector<std::string> Plugins::log;

TEST_F(Plugins, TheirFactoriesComeInTheirOrderBeforeTheBuiltInOnes) {
  EXPECT_EQ(initialized, QVERR_CREATE_FAILED) << "one factory throws when it is registered";
  const std::vector<std::wstring> onLinux = {
      L"Microsoft WAV Format",
      L"opt",
      L"Toy Format",
      L"unopenable",
      L"AUD/NMF/WAV/G729AB/TrueSpeech/G722/ALaw/Mulaw format",
      L"Sun AU Format",
      L"Oki/Dialogic VOX Format",
      L"Portable WAV Format",
      L"Opus media format"};
  // Its own readers are to stand in the place of the first.
  const std::vector<std::wstring> onWindows(onLinux.begin() + 1, onLinux.end());
  const auto& expected = tests::kSystemIsWindows ? onWindows : onLinux;
  EXPECT_EQ(FactoryNames(), expected);
  // They come back after a clear, from the modules that are loaded.
  EXPECT_EQ(MediaAccessorRegistryClear(), QVERR_OK);
  EXPECT_EQ(FactoryNames(), expected);
  int loaded = 0;
  for (const std::string& line : ReadLog()) {
    loaded += line.find("MediaAccessor.toy.") != std::string::npos;
  }
  EXPECT_EQ(loaded, 1);
}

TEST_F(Plugins, TheLogSaysWhatBecameOfEach) {
  EXPECT_EQ(LogOf("OptMediaAccessor"), "Plug-in module loaded: factories: 1, writer: no\n");
  EXPECT_EQ(LogOf("MediaAccessor.toy"), "Plug-in module loaded: factories: 1, writer: yes\n");
  EXPECT_EQ(
      LogOf("MediaAccessor.bare"),
      "Plug-in module loaded: factories: 0, writer: yes; it lacks GetOptionalLibraryVersion\n");
  EXPECT_EQ(LogOf("MediaAccessor.future"),
            "Plug-in module skipped: its interface has version 2, this library's has 1\n");
  EXPECT_EQ(LogOf("MediaAccessor.many"), "Plug-in module skipped: it has too many factories\n");
  EXPECT_EQ(LogOf("MediaAccessor.throwing"),
            "Plug-in module skipped: an exception came out of it\n");
  EXPECT_EQ(LogOf("MediaAccessor.undeclared"),
            "Plug-in module loaded: factories: 1, writer: no\n"
            "Plug-in module: a factory failed to be registered: 600\n");
  if (MEDIA_ACCESSOR_LOADING_MAY_THROW) {
    EXPECT_TRUE(LogOf("MediaAccessor.loading").starts_with("Plug-in module skipped: "));
  }
  const std::string broken = LogOf("MediaAccessor.broken");
  EXPECT_TRUE(broken.starts_with("Plug-in module skipped: ")) << broken;
  EXPECT_GT(broken.size(), 35U) << "the system's own words: " << broken;
}

TEST_F(Plugins, OnlyTheLibrarysOwnDirectoryCounts) {
  ASSERT_FALSE(std::filesystem::is_empty(std::filesystem::current_path()));
  EXPECT_EQ(LogOf("MediaAccessor.elsewhere"), "");
  MediaFilePtr file;
  EXPECT_EQ(MediaFileOpen("x.elsewhere", file), QVERR_BAD_FORMAT);
}

TEST_F(Plugins, TheExampleReadsAndWrites) {
  const auto samples = tests::ReadSamples(tests::Fixture("sox_mulaw_mono.s16"));
  MediaFilePtr recording;
  ASSERT_EQ(MediaFileOpen(tests::Fixture("sox_mulaw_mono.wav").c_str(), recording), QVERR_OK);
  ASSERT_TRUE(HasFFmpegWriter());
  const MediaFileWriterPtr writer(CreateFFmpegWriterInstance());
  ASSERT_NE(writer, nullptr);
  const std::string path = directory->File("\xC3\xBC.toy");
  const std::wstring widePath = Wide(path);
  ASSERT_EQ(writer->WriteFile(recording.get(), widePath.c_str(), false), QVERR_OK);
  EXPECT_EQ(tests::ReadSamples(path), samples);

  MediaFilePtr toy;
  ASSERT_EQ(MediaFileOpen(widePath.c_str(), toy), QVERR_OK);
  EXPECT_EQ(toy->GetMilliseconds(), 250U);
  EXPECT_EQ(tests::PullAll(*toy), samples);
  toy.reset();
  tests::WriteBytes(path, {1, 2, 3});
  EXPECT_EQ(MediaFileOpen(widePath.c_str(), toy), QVERR_BAD_FORMAT);
}

TEST_F(Plugins, AnExceptionOfTheirsIsAResult) {
  MediaFilePtr file;
  EXPECT_EQ(MediaFileOpen("x.unopenable", file), QVERR_CREATE_FAILED);
  EXPECT_EQ(MediaFileOpen("x.opt", file), QVERR_CREATE_FAILED);
  EXPECT_EQ(MediaFileOpen(tests::Fixture("sox_mulaw_mono.wav").c_str(), file), QVERR_OK);
}

}  // namespace
