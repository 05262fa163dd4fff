#include "codecs/engines/g723_1/silence_encoder.h"
