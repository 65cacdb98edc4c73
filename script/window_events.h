#pragma once

#include "base/api.h"

#include <wx/string.h>

class CJScriptLink;
class wxObject;

/// What links and stores ask of a program with windows. The library itself links no windows; the small library
/// vc_qxparser_window fills this in when it is loaded.
struct CJSWindowEvents
{
    ///@{
    /// Puts the link among the window's event handlers, and takes it away.
    void (*push)(wxObject* window, CJScriptLink* link);
    void (*pop)(wxObject* window, CJScriptLink* link);
    ///@}

    /// What wxWindow::GetName says.
    wxString (*name)(const wxObject* window);
};

/// Sets it for the process; null takes it away.
VC_QXPARSER_API void SetWindowEvents(const CJSWindowEvents* events);

/// The name of a window. False for an object that is none.
VC_QXPARSER_API bool GetWindowName(const wxObject* object, wxString& name);
