#include "tests/support/lamp.h"

#include "script/class_module.h"
#include "script/native_function.h"

#include <wx/event.h>

#include <utility>

wxIMPLEMENT_CLASS(Lamp, wxObject);

int Lamp::ms_alive = 0;

JSMapEntry Lamp::m_JSMapEntries[] = {
    JSPrimaryConstructor<Lamp>(),
    JSConstructor<Lamp>(),
    JSConstructor<Lamp, int>(),
    JSField<Lamp>("level", &Lamp::m_level),
    JSField<Lamp>("voltage", &Lamp::m_voltage),
    JSField<Lamp>("name", &Lamp::m_name),
    JSField<Lamp>("on", &Lamp::m_on),
    JSField<Lamp>("steps", &Lamp::m_steps),
    JSField<Lamp>("labels", &Lamp::m_labels),
    JSObjectField<Lamp>("next", &Lamp::m_next, &Lamp::m_link),
    JSMapEntry("MAX", 100),
    JSMethod<&Lamp::Brighten>("Brighten"),
    JSMethod<&Lamp::Describe>("Describe"),
    JSMethod<&Lamp::Join>("Join"),
    JSMethod<&Lamp::Off>("Off"),
    JSMethod<&Lamp::GetNext>("GetNext"),
    JSMethod<&Lamp::SetNext>("SetNext"),
    JSMethod<&Lamp::IsSame>("IsSame"),
    JSMethod<&Lamp::Twice>("Twice"),
    JSMethod<&Lamp::Again>("Again"),
    JSMethod<&Lamp::Keep>("Keep"),
    JSMethod<&Lamp::Drop>("Drop"),
    JSMethod<&Lamp::Switch>("Switch"),
    JSMethod<&Lamp::State>("State"),
    JSMapEntry(Lamp::EventType, "OnSwitch"),
    JSMapEntry(),
};
const JSMap Lamp::m_JSMap{"Lamp", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Lamp::ms_JSClass(&Lamp::m_JSMap);
JS_REGISTER_CLASS_MODULE(Lamp);

void Lamp::Init()
{
    ++ms_alive;
    m_link.Link(this, &ms_JSClass);
}

Lamp::~Lamp()
{
    m_link.CallJS_OnDestroy();
    SetNext(nullptr);
    if (m_previous)
        m_previous->m_next = nullptr;
    --ms_alive;
}

int Lamp::Brighten(int by)
{
    return m_level = static_cast<int>(static_cast<unsigned int>(m_level) + static_cast<unsigned int>(by));
}

wxString Lamp::Join(const wxString& text, const wxArrayString& texts) const
{
    return text + wxJoin(texts, wxS(','));
}

void Lamp::SetNext(Lamp* next)
{
    if (Lamp* const before = std::exchange(m_next, nullptr))
        before->m_previous = nullptr;
    if (!next)
        return;
    if (next->m_previous)
        next->m_previous->m_next = nullptr;
    m_next = next;
    next->m_previous = this;
}

wxArrayInt Lamp::Again(wxArrayInt numbers)
{
    const wxArrayInt copy = numbers;
    for (const int number : copy)
        numbers.Add(number);
    return numbers;
}

bool Lamp::Switch()
{
    wxThreadEvent event(EventType);
    return m_link.ProcessEvent(event);
}
