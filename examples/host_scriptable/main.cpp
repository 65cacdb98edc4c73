// Publishes a class to script, runs a script file against it, and calls what the script left behind.
#include <vc_qxparser.h>

#include <wx/event.h>
#include <wx/init.h>
#include <wx/log.h>

#include <algorithm>
#include <cstdio>

wxDEFINE_EVENT(TANK_FULL, wxThreadEvent);

class Tank : public wxObject
{
public:
    Tank(const wxString& name, int capacity) : m_name(name), m_capacity(capacity) { m_link.Link(this, &ms_JSClass); }
    ~Tank() override { std::printf("(%s is gone)\n", ToUtf8(m_name).c_str()); }

    /// Returns how much found room.
    int Fill(int litres)
    {
        const int taken = std::clamp(litres, 0, m_capacity - m_level);
        m_level += taken;
        m_log.Add(taken);
        if (m_level == m_capacity) {
            wxThreadEvent event(TANK_FULL);
            m_link.ProcessEvent(event); // script's OnFull, if there is one
        }
        return taken;
    }

    /// Fills this tank from another.
    int FillFrom(Tank* source)
    {
        const int taken = source ? Fill(source->m_level) : 0;
        if (source)
            source->m_level -= taken;
        m_source = source;
        return taken;
    }

    CJScriptLink* GetJSLink() { return &m_link; }
    const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    wxString m_name;
    int m_capacity;
    int m_level = 0;
    wxArrayInt m_log;
    Tank* m_source = nullptr;
    CJScriptLink m_link;
};

JSMapEntry Tank::m_JSMapEntries[] = {
    JSConstructor<Tank, wxString, int>(),
    JSField<Tank>("name", &Tank::m_name),
    JSField<Tank>("capacity", &Tank::m_capacity),
    JSField<Tank>("level", &Tank::m_level),
    JSField<Tank>("log", &Tank::m_log),
    JSObjectField<Tank>("source", &Tank::m_source, &Tank::m_link),
    JSMapEntry("LARGEST", 1000),
    JSMethod<&Tank::Fill>("Fill"),
    JSMethod<&Tank::FillFrom>("FillFrom"),
    JSMapEntry(L"TANK_FULL", "OnFull"),
    JSMapEntry(),
};
const JSMap Tank::m_JSMap{"Tank", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Tank::ms_JSClass(&Tank::m_JSMap);
JS_REGISTER_CLASS_MODULE(Tank);

/// What scripts print, and the reports of their errors.
class StandardOutputLog : public wxLog
{
protected:
    void DoLogText(const wxString& text) override { std::printf("%s\n", ToUtf8(text).c_str()); }
    void DoLogRecord(wxLogLevel, const wxString& text, const wxLogRecordInfo&) override { DoLogText(text); }
};

int main(int argc, char** argv)
{
    CJScriptLinkClass::NameEvent(wxS("TANK_FULL"), TANK_FULL);
    const wxInitializer wx;
    delete wxLog::SetActiveTarget(new StandardOutputLog);
    wxLog::SetVerbose(true); // print is verbose

    wxString text;
    if (argc != 2 || !CDir().OpenFile(FromSystemName(argv[1]), wxFile::read).Read(text, CFile::convDefault))
        return std::puts("usage: host_scriptable SCRIPT"), 2;

    Tank barrel(wxS("barrel"), 50);
    qxjsMinimal global;
    CJScript script(nullptr);
    script.SetTimeLimit(1000);
    if (!script.SetGlobal(global.GetJSLink(), wxS("Global")) ||
        !script.CreateChild(barrel.GetJSLink(), global.GetJSLink(), wxS("barrel"), false, false))
        return 1;
    if (!script.Evaluate(text, nullptr))
        return 1; // the log has the report

    barrel.Fill(100);
    wxString summary;
    script.Evaluate(wxS("summary(barrel)"), nullptr, summary);
    std::printf("%s\n", ToUtf8(summary).c_str());
    return script.Call(wxS("broken"), global.GetJSLink()) ? 1 : 0;
}
