// Converts a mono or stereo WAV file to mono 16-bit PCM of another frequency, as an application
// would with libsndfile and libsoxr at its medium quality:
//     convert_libsndfile_soxr IN OUT HERTZ
#include <sndfile.h>
#include <soxr.h>

#include <cstdlib>
#include <vector>

int main(int argc, char** argv) {
  constexpr std::size_t kBlock = 8192;  // frames
  SF_INFO format{};
  SNDFILE* const in = argc < 4 ? nullptr : sf_open(argv[1], SFM_READ, &format);
  if (in == nullptr || format.channels > 2) return 1;
  const int channels = format.channels;
  const int frequency = format.samplerate;
  format = {};
  format.samplerate = std::atoi(argv[3]);
  format.channels = 1;
  format.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE* const out = sf_open(argv[2], SFM_WRITE, &format);
  soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
  io.flags = SOXR_NO_DITHER;
  const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_MQ, 0);
  const soxr_t soxr = soxr_create(frequency, format.samplerate, 1, nullptr, &io, &quality, nullptr);
  if (out == nullptr || soxr == nullptr) return 1;

  std::vector<short> block(2 * kBlock);
  std::vector<short> output(8 * kBlock);
  std::size_t taken = 0;
  std::size_t made = 0;
  do {
    taken = static_cast<std::size_t>(sf_readf_short(in, block.data(), kBlock));
    for (std::size_t f = 0; channels == 2 && f < taken; ++f) {
      block[f] = static_cast<short>((block[2 * f] + block[2 * f + 1]) / 2);
    }
    std::size_t used = 0;
    do {  // no input is the end of the stream
      const std::size_t left = taken - used;
      std::size_t done = 0;
      soxr_process(soxr, taken > 0 ? block.data() + used : nullptr, left, &done, output.data(),
                   output.size(), &made);
      used += done;
      sf_write_short(out, output.data(), static_cast<sf_count_t>(made));
    } while (used < taken || made == output.size());
  } while (taken > 0);
  soxr_delete(soxr);
  sf_close(in);
  return sf_close(out);
}
