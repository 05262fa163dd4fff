#include "codecs/engines/g723_1/linear_prediction.h"
