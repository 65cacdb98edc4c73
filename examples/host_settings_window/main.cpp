// A window that comes back as it was left: its place, its splitter and its check boxes are kept in a configuration.
//
//     host_settings_window FILE SCRIPT            a window like any other
//     host_settings_window FILE SCRIPT look       closes it again and prints how it was
//     host_settings_window FILE SCRIPT change     changes everything before that
#include <vc_qxparser.h>

#include <wx/app.h>
#include <wx/checkbox.h>
#include <wx/frame.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/splitter.h>
#include <wx/textctrl.h>
#include <wx/timer.h>

#include <cstdio>
#include <memory>

/// A window that script sees; `Self` is the class, which has the table of what script may do with it.
template <typename Self, typename Window> class Scriptable : public Window
{
public:
    template <typename... Arguments> explicit Scriptable(Arguments&&... arguments) : Window(arguments...)
    {
        m_link.Link(this, &Self::ms_JSClass);
    }
    ~Scriptable() override { m_link.CallJS_OnDestroy(); }

    CJScriptLink* GetJSLink() { return &m_link; }
    const JSMap* GetJSMap() const { return &Self::m_JSMap; }

private:
    CJScriptLink m_link;
};

class Frame : public Scriptable<Frame, wxFrame>
{
public:
    using Scriptable::Scriptable;

    int Left() { return GetPosition().x; }
    int Top() { return GetPosition().y; }
    int Width() { return GetSize().x; }
    int Height() { return GetSize().y; }
    void Place(int left, int top, int width, int height) { SetSize(left, top, width, height); }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
};

JSMapEntry Frame::m_JSMapEntries[] = {
    JSMethod<&Frame::Left>("Left"),     JSMethod<&Frame::Top>("Top"),     JSMethod<&Frame::Width>("Width"),
    JSMethod<&Frame::Height>("Height"), JSMethod<&Frame::Place>("Place"), JSMapEntry(),
};
const JSMap Frame::m_JSMap{"SettingsFrame", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Frame::ms_JSClass(&Frame::m_JSMap);

class Split : public Scriptable<Split, wxSplitterWindow>
{
public:
    using Scriptable::Scriptable;

    int Sash() { return GetSashPosition(); }
    void MoveSash(int position) { SetSashPosition(position); }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
};

JSMapEntry Split::m_JSMapEntries[] = {
    JSMethod<&Split::Sash>("Sash"),
    JSMethod<&Split::MoveSash>("MoveSash"),
    JSMapEntry(),
};
const JSMap Split::m_JSMap{"SettingsSplitter", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Split::ms_JSClass(&Split::m_JSMap);

class Box : public Scriptable<Box, wxCheckBox>
{
public:
    using Scriptable::Scriptable;

    bool IsOn() { return IsChecked(); }
    void Turn(bool on) { SetValue(on); }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
};

JSMapEntry Box::m_JSMapEntries[] = {
    JSMethod<&Box::IsOn>("IsOn"),
    JSMethod<&Box::Turn>("Turn"),
    JSMapEntry(),
};
const JSMap Box::m_JSMap{"SettingsBox", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass Box::ms_JSClass(&Box::m_JSMap);

class SettingsApp : public wxApp
{
public:
    bool OnInit() override
    {
        if (argc < 3)
            return std::puts("usage: host_settings_window FILE SCRIPT [look|change]"), false;
        MakeWindows();
        if (!LoadSettings(argv[1], argv[2]))
            return false;
        m_frame->Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent& event) {
            if (!m_config->SaveFile(true))
                std::puts("the settings are not saved");
            event.Skip();
        });
        m_frame->Show();
        if (argc > 3)
            ShowFor(argv[3] == wxString("change"));
        return true;
    }

private:
    void MakeWindows()
    {
        m_frame =
            new Frame(nullptr, wxID_ANY, "Settings", wxDefaultPosition, wxDefaultSize, wxDEFAULT_FRAME_STYLE, "frame");
        m_split = new Split(m_frame, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxSP_3D, "split");
        auto* const panel = new wxPanel(m_split);
        const auto makeBox = [&](const wxString& label, const wxString& name) {
            return new Box(panel, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
        };
        m_wrap = makeBox("Wrap lines", "wrap");
        m_numbers = makeBox("Line numbers", "numbers");
        auto* const column = new wxBoxSizer(wxVERTICAL);
        column->Add(m_wrap);
        column->Add(m_numbers);
        panel->SetSizer(column);
        m_split->SplitVertically(panel, new wxTextCtrl(m_split, wxID_ANY));
    }

    /// Makes the windows script's, lets the script register them, and so has them loaded.
    bool LoadSettings(const wxString& file, const wxString& scriptFile)
    {
        CJScriptLink* const global = m_global.GetJSLink();
        wxString text;
        if (!m_script.SetGlobal(global, "Global"))
            return false;
        m_script.CreateChild(m_frame->GetJSLink(), global, "frame", false, false);
        m_script.CreateChild(m_split->GetJSLink(), global, "split", false, false);
        m_script.CreateChild(m_wrap->GetJSLink(), global, "wrap", false, false);
        m_script.CreateChild(m_numbers->GetJSLink(), global, "numbers", false, false);
        m_config = std::make_unique<CXmlConfig>(&m_script, "Config", global, CDir(), file, true);
        m_config->LoadFile();
        return CDir().OpenFile(scriptFile, wxFile::read).Read(text, CFile::convDefault) &&
               m_script.Evaluate(text, nullptr);
    }

    /// Gives the display time to show the window, and the changes to it, before it is closed.
    void ShowFor(bool change)
    {
        m_timer.Bind(wxEVT_TIMER, [this, change](wxTimerEvent&) {
            ++m_ticks;
            if (m_ticks == 1 && change) {
                m_frame->Place(120, 90, 500, 350);
                m_wrap->Turn(true);
            }
            if (m_ticks == 2 && change)
                m_split->MoveSash(210);
            if (m_ticks < 4)
                return;
            m_timer.Stop();
            Print();
            m_frame->Close();
        });
        m_timer.Start(150);
    }

    void Print()
    {
        std::printf("%d,%d %dx%d, sash %d, wrap %d, numbers %d\n", m_frame->Left(), m_frame->Top(), m_frame->Width(),
                    m_frame->Height(), m_split->Sash(), m_wrap->IsOn(), m_numbers->IsOn());
    }

    qxjsMinimal m_global;
    CJScript m_script{nullptr};
    std::unique_ptr<CXmlConfig> m_config;
    Frame* m_frame = nullptr;
    Split* m_split = nullptr;
    Box* m_wrap = nullptr;
    Box* m_numbers = nullptr;
    wxTimer m_timer;
    int m_ticks = 0;
};

wxIMPLEMENT_APP(SettingsApp);
