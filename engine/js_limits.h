#pragma once

#include "base/api.h"

#include <cstddef>

/// @file
/// What natives that take long or much memory have to do with the limits of the script that called them.

namespace qxjs
{

/// Whether the scripts that run on the calling thread are still within their limits, and would be with so many bytes
/// more. Asked by natives between the parts of their work, since nothing else stops them: after false the script ends
/// with the report of its limit as soon as the native returns, whatever it returns. True when no script runs. May
/// collect garbage; costs a few nanoseconds unless a limit is near or the bytes are many.
VC_QXPARSER_API bool JS_MayGoOn(std::size_t bytes);

} // namespace qxjs
