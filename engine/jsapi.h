#pragma once

#include "engine/js_error.h"
#include "engine/js_gc.h"
#include "engine/js_limits.h"
#include "engine/js_object.h"
#include "engine/js_runtime.h"
#include "engine/js_script.h"
#include "engine/js_types.h"
#include "engine/js_value.h"

/// @file
/// The whole interface, with its names usable as they are: for hosts, which never see the engine's own headers.

/// The script engine as the library and its hosts see it: the types and functions of the 1.x programming interface,
/// over the engine that is installed. Where to begin: js_types.h for values, js_runtime.h for contexts, js_gc.h for
/// what lives how long, js_error.h for failures.
namespace qxjs
{
}

using namespace qxjs;
