#include "codecs/engines/g723_1/multipulse_search.h"
