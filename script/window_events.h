#pragma once

#include "base/api.h"

class CJScriptLink;
class wxObject;

/// What links ask of a program with windows. The library itself links no windows; the small library vc_qxparser_window
/// fills this in when it is loaded.
struct CJSWindowEvents
{
    /// Puts the link among the window's event handlers, and takes it away.
    void (*push)(wxObject* window, CJScriptLink* link);
    void (*pop)(wxObject* window, CJScriptLink* link);
};

/// Sets it for the process; null takes it away.
VC_QXPARSER_API void SetWindowEvents(const CJSWindowEvents* events);
