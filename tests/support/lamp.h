#pragma once

#include "script/script_class.h"
#include "script/script_link.h"
#include "script/script_minimal.h"

#include <wx/arrstr.h>
#include <wx/dynarray.h>
#include <wx/object.h>
#include <wx/string.h>

/// A scriptable class with a row of every kind, which can take whatever script does with it. Its module registers it.
class Lamp : public wxObject
{
public:
    static constexpr int EventType = 4242; ///< Calls script's "OnSwitch".

    Lamp() { Init(); }
    explicit Lamp(int level) : m_level(level) { Init(); }
    ~Lamp() override;

    Lamp(const Lamp&) = delete;
    Lamp& operator=(const Lamp&) = delete;

    int Brighten(int by);
    wxString Describe(const wxString& prefix) const { return prefix + m_name; }
    wxString Join(const wxString& text, const wxArrayString& texts) const;
    void Off() { m_level = 0; }
    Lamp* GetNext() { return m_next; }
    /// Each lamp stands behind one other at most.
    void SetNext(Lamp* next);
    bool IsSame(Lamp* other) { return other == this; }
    static int Twice(int number) { return 2 * number; }
    /// The numbers, and then once more.
    wxArrayInt Again(wxArrayInt numbers);
    void Keep(JSFunction* function) { m_link.AddFunction(function); }
    void Drop(JSFunction* function) { m_link.RemoveFunction(function); }
    /// Sends itself the event.
    bool Switch();
    wxString State() { return m_link.GetInitScript(); }

    CJScriptLink* GetJSLink() { return &m_link; }
    const CJScriptLink* GetJSLink() const { return &m_link; }
    const JSMap* GetJSMap() const { return &m_JSMap; }

    int m_level = 1;
    double m_voltage = 1.5;
    wxString m_name = wxS("lamp");
    bool m_on = false;
    wxArrayInt m_steps;
    wxArrayString m_labels;
    Lamp* m_next = nullptr;
    Lamp* m_previous = nullptr;
    wxObject* m_raw = nullptr;
    qxjsMinimal m_socket;
    CJScriptLink m_link;

    static int ms_alive;
    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    void Init();

    wxDECLARE_CLASS(Lamp);
};
