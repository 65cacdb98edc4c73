#include "script/window_events.h"

#include "script/script_link.h"

#include <wx/dynlib.h>
#include <wx/log.h>

#include <atomic>

namespace
{

constexpr const wchar_t* WindowLibrary = L"libvc_qxparser_window.so.0";

std::atomic<const CJSWindowEvents*> windowEvents{nullptr};

/// Whether the program has windows at all; looked up once, since programs without them make many objects.
const wxClassInfo* WindowClass()
{
    static const wxClassInfo* const found = wxClassInfo::FindClass(wxS("wxWindow"));
    return found;
}

/// A program with windows that was not linked with the library for them gets it loaded now; it stays.
const CJSWindowEvents* LoadWindowEvents()
{
    static const bool loaded = [] {
        auto* const library = new wxDynamicLibrary;
        const wxLogNull quiet;
        return library->Load(WindowLibrary, wxDL_NOW | wxDL_VERBATIM | wxDL_GLOBAL);
    }();
    if (!loaded || !windowEvents)
        wxLogError(wxS("Script objects that are windows need %s"), WindowLibrary);
    return windowEvents;
}

} // namespace

void SetWindowEvents(const CJSWindowEvents* events)
{
    windowEvents = events;
}

void CJScriptLink::InitEvtHandler(bool push)
{
    if (push == m_isEventHandler)
        return;
    if (push && (!WindowClass() || !m_owner->GetClassInfo()->IsKindOf(WindowClass())))
        return;
    const CJSWindowEvents* const events = windowEvents ? windowEvents.load() : LoadWindowEvents();
    if (!events)
        return;
    m_isEventHandler = push;
    (push ? events->push : events->pop)(m_owner, this);
}
