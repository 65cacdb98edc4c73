#pragma once

// The one place that includes the installed engine. Inside namespace qxjs its types are written ::JSObject and so on;
// unqualified names are this library's own.

#include <jsapi.h>
#include <jsfriendapi.h>

#include <js/Array.h>
#include <js/CallAndConstruct.h>
#include <js/CompilationAndEvaluation.h>
#include <js/Conversions.h>
#include <js/Exception.h>
#include <js/GCAPI.h>
#include <js/GlobalObject.h>
#include <js/HeapAPI.h>
#include <js/Initialization.h>
#include <js/Interrupt.h>
#include <js/MemoryFunctions.h>
#include <js/Object.h>
#include <js/Principals.h>
#include <js/Promise.h>
#include <js/PropertyAndElement.h>
#include <js/Realm.h>
#include <js/SavedFrameAPI.h>
#include <js/SourceText.h>
#include <js/Stack.h>
#include <js/String.h>
#include <js/Symbol.h>
#include <js/friend/ErrorMessages.h>
#include <js/friend/StackLimits.h>

// Macros of the engine under names that are constants here, with other values.
#undef JSVAL_INT_BITS
#undef JSVAL_INT_MAX
#undef JSVAL_INT_MIN
