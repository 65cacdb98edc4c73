// What a call across the border costs a host that publishes its classes by tables. Measured against bridge_floor.
#include "bench/bridge_script.h"
#include "vc_qxparser.h"

#include <wx/init.h>

#include <cstdlib>
#include <string>

namespace
{

class Peer : public wxObject
{
public:
    Peer() { m_link.Link(this, &ms_JSClass); }

    int Add(int number) { return number + 1; }
    int Length(const wxString& text) { return static_cast<int>(text.length()); }

    CJScriptLink* GetJSLink() { return &m_link; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    int m_value = 3;
    CJScriptLink m_link;
};

JSMapEntry Peer::m_JSMapEntries[] = {
    JSConstructor<Peer>(),
    JSMethod<&Peer::Add>("add"),
    JSMethod<&Peer::Length>("len"),
    JSField<Peer>("value", &Peer::m_value),
    JSMapEntry(),
};
const JSMap Peer::m_JSMap{"Peer", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Peer::ms_JSClass(&Peer::m_JSMap);

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    CJScriptLinkClass::RegisterJSClass(&Peer::ms_JSClass);
    qxjsMinimal global;
    Peer peer;
    CJScript script(nullptr);
    if (!script.SetGlobal(global.GetJSLink(), wxString()) ||
        !script.CreateChild(peer.GetJSLink(), global.GetJSLink(), wxS("o"), false, false) ||
        !script.Evaluate(wxS("var x = 5"), nullptr))
        return 1;
    jsval value = JSVAL_VOID;
    double number = 0;
    wxString wide; // a host has its texts; making them is not what is measured
    const bool same = argc > 1 && std::string(argv[1]) == "eval_same";
    const int status = Drive(argc, argv, [&](const std::string& text) {
        if (wide.empty() || !same)
            wide = wxString::FromAscii(text.data(), text.size());
        if (!script.EvaluateValue(wide, nullptr, value) || !JS_ValueToNumber(script.GetContext(), value, &number))
            std::exit(1);
        return number;
    });
    std::_Exit(status);
}
