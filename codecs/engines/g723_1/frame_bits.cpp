#include "codecs/engines/g723_1/frame_bits.h"
