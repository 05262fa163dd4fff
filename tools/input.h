// Opening files for the commands, and saying what went wrong with them.
#pragma once

#include <MediaAccessor/media_file_factory.h>
#include <MediaAccessor/ownership.h>

#include <string>

namespace media_accessor_tool {

/// Registers the reader of WAV codings where the system has others in its place: behind what is
/// registered for .wav already.
void RegisterWAVReader();

/// Finds the factory of a format name; null for an empty one. False when there is none of that
/// name, which is then reported on standard error. Registers the WAV reader first.
bool FindReader(const std::string& formatName, const Quorvex::CMediaFileFactory*& reader);

/// Opens a file with one factory alone, or, when it is null, with whatever the library chooses.
Quorvex::QVERRORCODE_TAG OpenFile(const std::string& path, const Quorvex::CMediaFileFactory* reader,
                                  Quorvex::MediaFilePtr& file);

/// Whether an output would replace its own input, which is then reported; "-" never does.
bool IsSameFile(const std::string& input, const std::string& output);

/// One line on standard error: file, code, its name and its meaning.
void ReportFailure(const std::string& path, Quorvex::QVERRORCODE_TAG result);

/// Text with its control characters spelled out, so that no file name can disturb a line or a
/// terminal.
std::string Printable(const std::string& text);

/// One line on standard error in the same shape, with a text of its own.
void ReportError(const std::string& subject, const std::string& text);

/// A factory's format name.
std::string FormatName(const Quorvex::CMediaFileFactory& factory);

}  // namespace media_accessor_tool
