// Files that appear whole or not at all.
#include "platform/pending_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "platform/text.h"
#include "tests/test_files.h"

namespace {

using namespace Quorvex;
using platform::PendingFile;
using tests::Bytes;

const Bytes kOld = {1, 2, 3};
const Bytes kNew = {4, 5};
const Bytes kOther = {6};

class PendingFileTest : public testing::Test {
 protected:
  std::wstring Name(const std::string& name) const { return platform::Widen(directory.File(name)); }
  void Write(const std::string& name, const Bytes& bytes) const {
    tests::WriteBytes(directory.File(name), bytes);
  }
  // What stands under the name; nothing when there is no file.
  std::optional<Bytes> Content(const std::string& name) const {
    if (!std::filesystem::exists(tests::Path(directory.File(name)))) return std::nullopt;
    return tests::ReadBytes(directory.File(name));
  }
  std::ptrdiff_t Files() const {
    const std::filesystem::directory_iterator all(directory.File(""));
    return std::distance(begin(all), end(all));
  }

  const tests::TemporaryDirectory directory;
};

TEST_F(PendingFileTest, AppearsWholeOrNotAtAll) {
  const struct {
    const char* what;
    std::optional<Bytes> before, meanwhile;  // what stands under the name
    bool replace, publish;
    QVERRORCODE_TAG created, published;
    std::optional<Bytes> after;
  } cases[] = {
      {"a new file", {}, {}, false, true, QVERR_OK, QVERR_OK, kNew},
      {"to be replaced, but there is none", {}, {}, true, true, QVERR_OK, QVERR_OK, kNew},
      {"replaced", kOld, {}, true, true, QVERR_OK, QVERR_OK, kNew},
      {"not to be replaced", kOld, {}, false, true, QVERR_FILE_CREATE_FAILED, QVERR_OK, kOld},
      {"somebody was faster", {}, kOther, false, true, QVERR_OK, QVERR_FILE_CREATE_FAILED, kOther},
      {"somebody was faster and is replaced", {}, kOther, true, true, QVERR_OK, QVERR_OK, kNew},
      {"given up", {}, {}, false, false, QVERR_OK, QVERR_OK, {}},
      {"given up, the old one stays", kOld, {}, true, false, QVERR_OK, QVERR_OK, kOld},
  };
  for (const auto& expected : cases) {
    SCOPED_TRACE(expected.what);
    std::filesystem::remove(directory.File("x"));
    if (expected.before) Write("x", *expected.before);
    {
      PendingFile file;
      ASSERT_EQ(file.Create(Name("x").c_str(), expected.replace), expected.created);
      if (expected.created == QVERR_OK) {
        EXPECT_TRUE(std::filesystem::is_empty(file.Name())) << "there, and empty";
        EXPECT_EQ(Files(), expected.before ? 2 : 1) << "beside it";
        EXPECT_EQ(Content("x"), expected.before) << "not before the end";
        tests::WriteBytes(platform::Narrow(file.Name()), kNew);
        if (expected.meanwhile) Write("x", *expected.meanwhile);
        if (expected.publish) {
          EXPECT_EQ(file.Publish(), expected.published);
        }
      }
    }
    EXPECT_EQ(Content("x"), expected.after);
    EXPECT_EQ(Files(), expected.after ? 1 : 0) << "nothing else is left";
  }
}

TEST_F(PendingFileTest, WhereNoFileCanBe) {
  std::filesystem::create_directory(directory.File("directory"));
  for (const bool replace : {false, true}) {
    const auto create = [&](const std::wstring& name) {
      return PendingFile().Create(name.c_str(), replace);
    };
    EXPECT_EQ(create(Name("missing/x")), QVERR_PATH_NOT_FOUND);
    EXPECT_EQ(create(Name("directory")), QVERR_FILE_CREATE_FAILED);
    EXPECT_EQ(create(L""), QVERR_FILE_CREATE_FAILED);
  }
  EXPECT_EQ(Files(), 1);
  EXPECT_TRUE(std::filesystem::is_empty(directory.File("directory")));
}

TEST_F(PendingFileTest, LongNamesAndRelativeOnes) {
  const auto before = std::filesystem::current_path();
  const std::string name(150, 'n');
  PendingFile file;
  std::filesystem::current_path(directory.File(""));
  const QVERRORCODE_TAG code = file.Create(platform::Widen(name).c_str(), false);
  std::filesystem::current_path(before);
  ASSERT_EQ(code, QVERR_OK);
  EXPECT_EQ(file.Publish(), QVERR_OK) << "whatever directory is the current one now";
  EXPECT_EQ(Content(name), Bytes());
}

}  // namespace
