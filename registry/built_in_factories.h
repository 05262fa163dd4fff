// The formats that the library brings along.
#pragma once

#include <span>

namespace Quorvex {

class CMediaFileFactory;

/// The built-in factories in registration order: a later one stands before an earlier one for an
/// extension that both declare. They live as long as the library.
std::span<const CMediaFileFactory* const> BuiltInFactories();

}  // namespace Quorvex
