// How a lag is sent: in the first subframe by itself, in the second beside the first.
#pragma once

#include "codecs/engines/g729a/excitation.h"

namespace Quorvex::g729a {

/// @param index  8 bits. @return thirds below 85 samples, whole lags from there on.
Lag FirstLag(unsigned index) noexcept;
/// @return 8 bits. Thirds count below 85 samples only.
unsigned FirstIndex(Lag lag) noexcept;

/// @param index  5 bits. @param least  LeastSecondLag.
Lag SecondLag(unsigned index, int least) noexcept;
unsigned SecondIndex(Lag lag, int least) noexcept;
/// From where on the second subframe's lag is sent; it is at most 9 more.
int LeastSecondLag(int firstLag) noexcept;

}  // namespace Quorvex::g729a
