// The reader of raw frames and speech-coded wave files: .g722, .g729a, .alaw and .mulaw files
// without a header, and RIFF/WAVE files of any extension in A-law and mu-law, with any number of
// channels, in G.729A, with one or two, and in G.723.1, with one.
//
// Its format name promises more than it does: the call-recording containers AUD and NMF are not
// read, and their extensions not declared.
//
// G.722 goes by frames of 80 bytes here, though it has none: such a frame of zeros is silence, and
// one that a growing file ended in is not gone on with.
#pragma once

namespace Quorvex {

class CMediaFileFactory;

/// The format's factory.
const CMediaFileFactory& InputAUDMediaFileFactory();

}  // namespace Quorvex
