#include "codecs/engines/g723_1/voice_activity.h"
