#include "fuzz/fuzz_support.h"
#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/script_minimal.h"
#include "tags/cond_tag_parser.h"
#include "xml/xml_document.h"

#include <algorithm>
#include <iterator>

namespace
{

constexpr long TimeLimit = 100; // ms
constexpr std::size_t MemoryLimit = 256 << 20;
constexpr unsigned long PassLimit = 2000;

/// What separates the template from the document in an input.
const wxString Separator = wxS("\n====\n");

/// What came of a template.
struct Expansion
{
    bool isRead = false;
    bool isDone = false;
    wxString text;
    wxString message;

    bool operator==(const Expansion& other) const
    {
        return isRead == other.isRead && isDone == other.isDone && text == other.text && message == other.message;
    }
};

/// A document with script from the start, or from when it is asked for.
class ScriptedDocument
{
public:
    explicit ScriptedDocument(const wxString& xml)
    {
        m_script.SetTimeLimit(TimeLimit);
        m_script.SetMemoryLimit(MemoryLimit);
        m_script.SetGlobal(m_global.GetJSLink(), wxS("Global"));
        document.SetContent(xml);
    }
    ~ScriptedDocument() { document.Clear(); }

    CJScript* Script()
    {
        document.SetScript(&m_script, wxS("Document"), m_global.GetJSLink());
        return &m_script;
    }

private:
    qxjsMinimal m_global;
    CJScript m_script{nullptr};

public:
    CXmlDocument document;
};

class LateTemplate : public CCondTagParser
{
public:
    LateTemplate(CPreprocessor& pp, ScriptedDocument& document) : CCondTagParser(&pp), m_document(document) {}

protected:
    CJScript* ProvideScript() override { return m_document.Script(); }

private:
    ScriptedDocument& m_document;
};

enum class Start
{
    AtOnce,
    WhenNeeded
};

Expansion Expand(const wxString& text, const wxString& xml, Start start)
{
    ScriptedDocument scripted(xml);
    CXmlDocument& document = scripted.document;
    CPreprocessor pp(nullptr, true);
    pp.Desactivate();
    LateTemplate parser(pp, scripted);
    parser.SetPassLimit(PassLimit);

    Expansion result;
    parser.Parse(text, wxS("input"), nullptr, false);
    result.isRead = parser.ParseBlock(parser.GetLastBlock(0)) == 0;
    CXmlNode* const root = document.GetRawRoot();
    result.isDone = result.isRead && parser.Process(root ? root : document.GetEmptyNode(), result.text,
                                                    start == Start::AtOnce ? scripted.Script() : nullptr);
    parser.GetLastErrorStr(&result.message);
    Require(result.isDone == result.message.empty(), "a failure, and only that, leaves a message");
    return result;
}

/// Whether the same comes of a text at any time.
bool IsSteady(const wxString& text)
{
    const wxString words[] = {wxS("ate"), wxS("andom"), wxS("now"), wxS("val"), wxS("unc"), wxS("\\"),
                              wxS("["),   wxS("hile"),  wxS("or"),  wxS("eat"), wxS("pad"), wxS("*")};
    wxString scripts = text;
    scripts.Replace(wxS("[%"), wxString());
    return std::none_of(std::begin(words), std::end(words),
                        [&](const wxString& word) { return scripts.Contains(word); });
}

/// The lines of a text without empty ones, each with a line feed, and a line feed behind them all.
wxString Lines(const wxString& text)
{
    CPreprocessor pp(nullptr, true);
    pp.Desactivate();
    CParser parser(&pp);
    parser.Parse(text, wxS("input"), nullptr, false);
    wxString lines;
    parser.GetLastBlock(0)->GetBuffer(lines, false);
    return lines.empty() ? lines : lines + wxS("\n");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    StartLibrary();
    const std::size_t scriptObjects = JS_CountHostObjects();
    const wxString input = InputText(data, size);
    const std::size_t end = std::min(input.find(Separator), input.length());
    const wxString text = input.substr(0, end);
    const wxString xml = end < input.length() ? input.substr(end + Separator.length()) : wxString(wxS("<r a='1'/>"));

    const Expansion first = Expand(text, xml, Start::AtOnce);
    if (IsSteady(text)) {
        Require(Expand(text, xml, Start::AtOnce) == first, "the same template and document give the same text");
        Require(Expand(text, xml, Start::WhenNeeded) == first, "it does not matter when scripts start");
    }
    if (!text.Contains(wxS("<%")) && !text.Contains(wxS("[%")))
        Require(first.isDone && first.text == Lines(text), "a text without tags is written as it is");
    Require(JS_CountHostObjects() == scriptObjects, "no script object outlives its context");
    return 0;
}
