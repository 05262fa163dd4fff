// The result codes as text.
#include <MediaAccessor/result_code.h>

namespace Quorvex {
namespace {

struct ResultText {
  QVERRORCODE_TAG code;
  const char* name;
  const wchar_t* wideName;
  const char* meaning;
  const wchar_t* wideMeaning;
};

#define RESULT(name, meaning) \
  { name, #name, L## #name, meaning, L"" meaning }

constexpr ResultText kResults[] = {
    RESULT(QVERR_OK, "success"),
    RESULT(QVERR_NO_SINK, "no sink was given"),
    RESULT(QVERR_NO_CHANNEL_MAP, "a file's channel interface was used before it had a channel map"),
    RESULT(QVERR_FILE_OPEN_FAILED, "the file could not be opened, sized or positioned"),
    RESULT(QVERR_FILE_IO, "a read, write or seek failed, or a data chunk is truncated"),
    RESULT(QVERR_READ_PAST_END, "a read asked for bytes beyond the end of the file"),
    RESULT(QVERR_FILE_CREATE_FAILED, "the file could not be created"),
    RESULT(QVERR_FILE_WRITE_FAILED, "a header or data could not be written"),
    RESULT(QVERR_BAD_FILE_NAME, "the file name is empty"),
    RESULT(QVERR_FILE_NOT_FOUND, "the file does not exist"),
    RESULT(QVERR_PATH_NOT_FOUND, "the directory does not exist"),
    RESULT(QVERR_ACCESS_DENIED, "access to the file was refused"),
    RESULT(QVERR_FILE_NOT_OPEN, "the operation needs an open file"),
    RESULT(QVERR_ALREADY_OPEN, "the object is open already"),
    RESULT(QVERR_NO_SOURCE, "no source accessor, or no factory, was given"),
    RESULT(QVERR_INVALID_ARGUMENT, "an argument was refused"),
    RESULT(QVERR_NO_SAMPLING_FREQUENCY, "the sampling frequency of a writer was not set"),
    RESULT(QVERR_CREATE_FAILED, "an object or memory that was needed could not be created"),
    RESULT(QVERR_BAD_STATE, "the operation is not possible in this state or set-up"),
    RESULT(QVERR_BUSY, "the registry's lock could not be had in time"),
    RESULT(QVERR_BAD_FORMAT, "not of this format, or cannot be decoded"),
    RESULT(QVERR_UNSUPPORTED_CHANNELS, "a channel count or channel selection is not supported"),
    RESULT(QVERR_BAD_TRACK, "the file has no such track"),
    RESULT(QVERR_MONO_ONLY, "the coding is written only in mono"),
    RESULT(QVERR_BAD_CHANNEL_COUNT, "the input channel count is below 1"),
    RESULT(QVERR_NOT_LICENSED, "the speech codec is not licensed"),
    RESULT(QVERR_CODEC_NOT_LICENSED, "the output coding is not licensed"),
};

#undef RESULT

constexpr ResultText kUnknown = {QVERR_OK, "QVERR_UNKNOWN", L"QVERR_UNKNOWN", "unknown result code",
                                 L"unknown result code"};

const ResultText& Find(QVERRORCODE_TAG code) {
  for (const ResultText& result : kResults) {
    if (result.code == code) return result;
  }
  return kUnknown;
}

}  // namespace

const char* MediaAccessorGetResultName(QVERRORCODE_TAG code) noexcept { return Find(code).name; }

const wchar_t* MediaAccessorGetResultNameWide(QVERRORCODE_TAG code) noexcept {
  return Find(code).wideName;
}

const char* MediaAccessorGetResultMeaning(QVERRORCODE_TAG code) noexcept {
  return Find(code).meaning;
}

const wchar_t* MediaAccessorGetResultMeaningWide(QVERRORCODE_TAG code) noexcept {
  return Find(code).wideMeaning;
}

}  // namespace Quorvex
