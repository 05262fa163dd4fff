#include "codecs/engines/g723_1/high_pass.h"
