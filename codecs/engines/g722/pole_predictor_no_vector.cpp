// For processors without a vector variant of the poles.
#include "codecs/engines/g722/pole_predictor.h"

namespace Quorvex::g722 {

void Predict(PolePredictor& lower, PolePredictor& higher, const Word* differences,
             const Word* zeroParts, std::size_t count, Word* predictions) noexcept {
  PredictPlain(lower, higher, differences, zeroParts, count, predictions);
}

}  // namespace Quorvex::g722
