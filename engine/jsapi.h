#pragma once

#include "engine/js_error.h"
#include "engine/js_gc.h"
#include "engine/js_object.h"
#include "engine/js_runtime.h"
#include "engine/js_script.h"
#include "engine/js_types.h"
#include "engine/js_value.h"

// The whole interface, with its names usable as they are: for hosts, which never see the engine's own headers.
using namespace qxjs;
