// The poles of both bands, one after the other.
#include "codecs/engines/g722/pole_predictor.h"

namespace Quorvex::g722 {

void PredictPlain(PolePredictor& lower, PolePredictor& higher, const Word* differences,
                  const Word* zeroParts, std::size_t count, Word* predictions) noexcept {
  for (std::size_t i = 0; i < 2 * count; i += 2) {
    predictions[i] = lower.prediction;
    predictions[i + 1] = higher.prediction;
    lower.Update(differences[i], zeroParts[i]);
    higher.Update(differences[i + 1], zeroParts[i + 1]);
  }
}

}  // namespace Quorvex::g722
