// The Ogg Opus reader, over libopusfile.
#pragma once

namespace Quorvex {

class CMediaFileFactory;

/// The format's factory.
const CMediaFileFactory& OpusMediaFileFactory();

}  // namespace Quorvex
