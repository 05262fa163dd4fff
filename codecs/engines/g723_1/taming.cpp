#include "codecs/engines/g723_1/taming.h"
