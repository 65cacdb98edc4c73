#include "script/window_events.h"

#include "script/script_link.h"

#include <wx/log.h>
#include <wx/window.h>

namespace
{

bool IsAmongHandlers(const wxWindow& window, const wxEvtHandler* wanted)
{
    const wxEvtHandler* handler = window.GetEventHandler();
    while (handler && handler != wanted)
        handler = handler->GetNextHandler();
    return handler != nullptr;
}

void Push(wxObject* window, CJScriptLink* link)
{
    static_cast<wxWindow*>(window)->PushEventHandler(link);
}

/// The window may be in the middle of its destruction, of which its link is a part. A handler that was pushed later and
/// stands in the way stays, since others will take it off; a link that was taken off already has nothing to leave.
void Pop(wxObject* object, CJScriptLink* link)
{
    auto* const window = static_cast<wxWindow*>(object);
    if (window->GetEventHandler() == link) {
        window->PopEventHandler();
        return;
    }
    wxLogError(wxS("CJScriptLink PopEventHandler de-synchronisation !!!"));
    if (IsAmongHandlers(*window, link))
        window->RemoveEventHandler(link);
}

wxString Name(const wxObject* window)
{
    return static_cast<const wxWindow*>(window)->GetName();
}

constexpr CJSWindowEvents WindowEvents{&Push, &Pop, &Name};

/// Loading the library registers it, by whatever means it is loaded.
struct Registration
{
    Registration() { SetWindowEvents(&WindowEvents); }
    ~Registration() { SetWindowEvents(nullptr); }
};

const Registration registration;

} // namespace
