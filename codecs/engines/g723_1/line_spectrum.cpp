#include "codecs/engines/g723_1/line_spectrum.h"
