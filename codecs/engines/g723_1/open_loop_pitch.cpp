#include "codecs/engines/g723_1/open_loop_pitch.h"
