// The VOX reader: Dialogic/OKI ADPCM without a header. Its public face is CVOXMediaFile.
#pragma once

namespace Quorvex {

class CMediaFileFactory;

/// The format's factory.
const CMediaFileFactory& VOXMediaFileFactory();

}  // namespace Quorvex
