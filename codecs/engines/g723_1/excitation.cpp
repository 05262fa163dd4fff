#include "codecs/engines/g723_1/excitation.h"
