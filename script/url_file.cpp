#include "script/url_file.h"

#include "base/dir.h"
#include "base/patience_detail.h"
#include "script/class_module.h"
#include "script/native_function.h"

wxIMPLEMENT_CLASS(CJSURLFile, wxObject);

JSMapEntry CJSURLFile::m_JSMapEntries[] = {
    JSConstructor<CJSURLFile>(),
    JSMethod<&CJSURLFile::Open>("Open"),
    JSMethod<&CJSURLFile::IsOpened>("IsOpened"),
    JSMethod<&CJSURLFile::Close>("Close"),
    JSMethod<&CJSURLFile::ReadLn>("ReadLn"),
    JSMethod<&CJSURLFile::ReadAll>("ReadAll"),
    JSMapEntry(),
};
const JSMap CJSURLFile::m_JSMap{"URLFile", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass CJSURLFile::ms_JSClass(&CJSURLFile::m_JSMap);

JS_REGISTER_CLASS_MODULE(CJSURLFile)

CJSURLFile::CJSURLFile()
{
    m_link.Link(this, &ms_JSClass);
}

bool CJSURLFile::Open(const wxString& location, const wxString& name, const wxString& path, const wxString& encoding)
{
    m_file = CDir::ExtractDir(location, path, encoding).OpenFile(name, wxFile::read);
    return IsOpened();
}

bool CJSURLFile::IsOpened()
{
    return m_file.IsOpened();
}

void CJSURLFile::Close()
{
    if (m_file.IsOpened())
        m_file.Close();
}

wxString CJSURLFile::ReadLn()
{
    const vcq::detail::Patience patience(&JS_MayGoOn);
    return IsOpened() ? m_file.ReadLine(CFile::convDefault) : wxString();
}

wxString CJSURLFile::ReadAll()
{
    const vcq::detail::Patience patience(&JS_MayGoOn);
    wxString text;
    if (IsOpened())
        m_file.Read(text, CFile::convDefault);
    return text;
}
