// Library initialisation.
#pragma once

#include <MediaAccessor/result_code.h>

namespace Quorvex {

class FactoryRegistry;

/// Registers the built-in factories, in their order.
QVERRORCODE_TAG RegisterBuiltInFactories(FactoryRegistry& registry);

}  // namespace Quorvex
