#include "codecs/engines/g723_1/comfort_noise.h"
