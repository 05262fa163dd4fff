// Library initialisation.
#pragma once

#include <MediaAccessor/result_code.h>

namespace Quorvex {

class FactoryRegistry;

/// Registers the factories of the plug-in modules and then the built-in ones.
QVERRORCODE_TAG RegisterBuiltInFactories(FactoryRegistry& registry);

}  // namespace Quorvex
