#include "script/window_events.h"

#include "base/library_path_detail.h"
#include "script/script_link.h"

#include <wx/dynlib.h>
#include <wx/log.h>

#include <atomic>

namespace
{

constexpr const wchar_t* WindowLibrary = L"libvc_qxparser_window.so." QXP_ABI_VERSION;

std::atomic<const CJSWindowEvents*> windowEvents{nullptr};

/// Whether the class is wxWidgets' class of windows or a descendant. Goes by the name, as the class itself is in a
/// library that programs without windows do not load.
bool IsWindowClass(const wxClassInfo* info)
{
    return info && (wxStrcmp(info->GetClassName(), wxS("wxWindow")) == 0 || IsWindowClass(info->GetBaseClass1()) ||
                    IsWindowClass(info->GetBaseClass2()));
}

/// Loads the library, which then stays: from beside this one, or else from where the system looks.
bool LoadWindowLibrary()
{
    wxDynamicLibrary library;
    const wxLogNull quiet;
    constexpr int flags = wxDL_NOW | wxDL_VERBATIM | wxDL_GLOBAL;
    const bool isLoaded =
        library.Load(vcq::detail::LibraryDirectory() + WindowLibrary, flags) || library.Load(WindowLibrary, flags);
    library.Detach();
    return isLoaded;
}

/// A program with windows that was not linked with the library for them gets it loaded now.
const CJSWindowEvents* LoadWindowEvents()
{
    static const bool isLoaded = LoadWindowLibrary();
    if (!isLoaded || !windowEvents)
        wxLogError(wxS("Script objects that are windows need %s"), WindowLibrary);
    return windowEvents;
}

const CJSWindowEvents* WindowEvents()
{
    return windowEvents ? windowEvents.load() : LoadWindowEvents();
}

} // namespace

void SetWindowEvents(const CJSWindowEvents* events)
{
    windowEvents = events;
}

bool GetWindowName(const wxObject* object, wxString& name)
{
    if (!object || !IsWindowClass(object->GetClassInfo()))
        return false;
    const CJSWindowEvents* const events = WindowEvents();
    if (events)
        name = events->name(object);
    return events != nullptr;
}

void CJScriptLink::InitEvtHandler(bool push)
{
    if (push == m_isEventHandler)
        return;
    if (push && !IsWindowClass(m_owner->GetClassInfo()))
        return;
    const CJSWindowEvents* const events = WindowEvents();
    if (!events)
        return;
    m_isEventHandler = push;
    (push ? events->push : events->pop)(m_owner, this);
}
