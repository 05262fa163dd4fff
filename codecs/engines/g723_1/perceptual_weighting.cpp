#include "codecs/engines/g723_1/perceptual_weighting.h"
