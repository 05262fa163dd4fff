// A module for codings that has not the version that it is asked for.
#include "compression/module_abi.h"

extern "C" [[gnu::visibility("default")]] const MediaAccessorCodingModule*
MediaAccessorGetCodingModule(uint32_t) {
  return nullptr;
}
