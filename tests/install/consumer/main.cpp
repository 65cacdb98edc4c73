// A stranger's program: something of every capability, against the installed headers and library.
#include <vc_qxparser.h>

#include <wx/init.h>
#include <wx/mstream.h>

#include <cstdio>

namespace
{

void Show(const char* what, const wxString& text)
{
    std::printf("%s: %s\n", what, ToUtf8(text).c_str());
}

bool Load(CXmlDocument& document, const char* text)
{
    wxMemoryInputStream stream(text, wxStrlen(text));
    return document.Load(stream, wxS("UTF-8"), 0);
}

void Preprocess()
{
    CPreprocessor preprocessor(nullptr, true);
    preprocessor.AddDefine(wxS("product"), wxS("Lamp"), wxArrayString());
    CParser parser(&preprocessor);
    parser.Parse(wxS("#product costs #{ 6 * 7 }"), wxS("price.txt"), nullptr, false);
    Show("preprocessed", parser.GetLastBlock(0)->GetUnit(0)->m_text);
}

void Merge(CXmlDocument& document)
{
    CXmlDocument overlay;
    if (Load(overlay, "<shop><lamp price='42'/></shop>") && document.MergeXML(&overlay, true))
        Show("merged", document.GetRawRoot()->GetRawNode(wxS("lamp"))->GetPropW(wxS("price"), wxString()));
}

void Expand(CXmlDocument& document)
{
    CPreprocessor preprocessor(nullptr, false);
    CCondTagParser pattern(&preprocessor);
    wxString text;
    pattern.Parse(wxS("<%keep node='lamp'%>\n[%price%]\n<%/keep%>\n"), wxS("shop.tpl"), nullptr, false);
    if (pattern.ParseBlock(pattern.GetLastBlock(0)) == 0 && pattern.Process(document.GetRawRoot(), text, nullptr))
        Show("expanded", text.Trim());
}

void RunScript()
{
    qxjsMinimal global;
    CJScript script(nullptr);
    script.SetGlobal(global.GetJSLink(), wxS("Global"));
    wxString result;
    if (script.Evaluate(wxS("StrToUpper('lamp')"), nullptr, result))
        Show("script", result);
}

} // namespace

int main()
{
    const wxInitializer wx;
    CXmlDocument document;
    if (!Load(document, "<shop><lamp/></shop>"))
        return 1;
    Preprocess();
    Merge(document);
    Expand(document);
    RunScript();
    return 0;
}
