#include "codecs/engines/g723_1/algebraic_search.h"
