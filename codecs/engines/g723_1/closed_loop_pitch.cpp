#include "codecs/engines/g723_1/closed_loop_pitch.h"
