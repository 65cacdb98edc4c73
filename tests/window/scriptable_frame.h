#pragma once

#include "script/class_module.h"
#include "script/native_function.h"
#include "script/script_link.h"

#include <wx/button.h>
#include <wx/frame.h>

/// A window that script sees: its button calls the script function "OnPress", its closing "OnShut".
class ScriptableFrame : public wxFrame
{
public:
    ScriptableFrame() : wxFrame(nullptr, wxID_ANY, wxS("Test"))
    {
        m_button = new wxButton(this, wxID_ANY, wxS("Press"));
        m_link.Link(this, &ms_JSClass);
    }

    CJScriptLink* GetJSLink() { return &m_link; }
    const JSMap* GetJSMap() const { return &m_JSMap; }

    wxButton* m_button;
    int m_presses = 0;
    CJScriptLink m_link;

    static inline JSMapEntry m_JSMapEntries[] = {
        JSField<ScriptableFrame>("presses", &ScriptableFrame::m_presses),
        JSMapEntry(L"TEST_PRESS", "OnPress"),
        JSMapEntry(L"TEST_SHUT", "OnShut"),
        JSMapEntry(),
    };
    static inline const JSMap m_JSMap{"ScriptableFrame", &CJScriptLink::ms_JSClass, m_JSMapEntries};
    static inline CJScriptLinkClass ms_JSClass{&m_JSMap};

    /// Event types of windows are numbered at run time, so the table knows them by name.
    static void NameEvents()
    {
        CJScriptLinkClass::NameEvent(wxS("TEST_PRESS"), wxEVT_BUTTON);
        CJScriptLinkClass::NameEvent(wxS("TEST_SHUT"), wxEVT_CLOSE_WINDOW);
    }
};
