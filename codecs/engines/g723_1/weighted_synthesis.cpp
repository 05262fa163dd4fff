#include "codecs/engines/g723_1/weighted_synthesis.h"
