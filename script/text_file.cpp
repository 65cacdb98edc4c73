#include "script/text_file.h"

#include "base/atomic_file_detail.h"
#include "base/dir.h"
#include "base/patience_detail.h"
#include "base/text_encoding.h"
#include "script/class_module.h"
#include "script/native_function.h"
#include "script/text_lines_detail.h"

#include <wx/filename.h>
#include <wx/log.h>

#include <string>

wxIMPLEMENT_CLASS(CqxJSFile, wxObject);

JSMapEntry CqxJSFile::m_JSMapEntries[] = {
    JSConstructor<CqxJSFile>(),
    JSMethod<&CqxJSFile::Open>("Open"),
    JSMethod<&CqxJSFile::Create>("Create"),
    JSMethod<&CqxJSFile::IsOpened>("IsOpened"),
    JSMethod<&CqxJSFile::Close>("Close"),
    JSMethod<&CqxJSFile::Eof>("Eof"),
    JSMethod<&CqxJSFile::ReadLn>("ReadLn"),
    JSMethod<&CqxJSFile::ReadAll>("ReadAll"),
    JSMethod<&CqxJSFile::Clear>("Clear"),
    JSMethod<&CqxJSFile::WriteLn>("WriteLn"),
    JSMapEntry(),
};
const JSMap CqxJSFile::m_JSMap{"TextFile", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass CqxJSFile::ms_JSClass(&CqxJSFile::m_JSMap);

JS_REGISTER_CLASS_MODULE(CqxJSFile)

CqxJSFile::CqxJSFile() : m_file(std::make_unique<CTextLines>())
{
    m_link.Link(this, &ms_JSClass);
}

CqxJSFile::~CqxJSFile() = default;

/// Starts over with the file of this path; false when it is no path, and then the file that is open stays so.
bool CqxJSFile::Resolve(wxString& path)
{
    m_position = 0;
    if (!CDir::ResolvePath(path))
        return false;
    Close();
    return true;
}

bool CqxJSFile::Open(wxString path)
{
    if (!Resolve(path))
        return false;
    const vcq::detail::Patience patience(&JS_MayGoOn);
    // The system opens directories for reading too, and gives them any length.
    m_hasFile = !wxFileName::DirExists(path) && m_file->Open(path, wxConvAuto());
    return m_hasFile;
}

bool CqxJSFile::Create(wxString path)
{
    if (!Resolve(path))
        return false;
    m_hasFile = m_file->Create(path);
    return m_hasFile;
}

bool CqxJSFile::IsOpened()
{
    return m_file->IsOpened();
}

void CqxJSFile::Close()
{
    m_hasFile = false;
    m_file->Close();
}

bool CqxJSFile::Eof()
{
    return m_position >= m_file->GetLineCount();
}

wxString CqxJSFile::ReadLn()
{
    return Eof() ? wxString() : m_file->GetLine(m_position++);
}

wxString CqxJSFile::ReadAll()
{
    wxString text;
    for (std::size_t i = 0; i < m_file->GetLineCount(); ++i)
        text << m_file->GetLine(i) << wxS("\n");
    return text;
}

/// In one step: wxTextFile's own way takes a part that was written for the whole.
bool CqxJSFile::WriteBack()
{
    std::string bytes;
    for (std::size_t i = 0; i < m_file->GetLineCount(); ++i)
        bytes += ToUtf8(m_file->GetLine(i) + wxTextFile::GetEOL(m_file->GetLineType(i)));
    // Each line that a script writes comes by here; none waits for the disk.
    if (vcq::detail::ReplaceFile(ToSystemName(m_file->GetName()), bytes))
        return true;
    wxLogSysError(wxS("'%s' cannot be written"), m_file->GetName());
    return false;
}

bool CqxJSFile::Clear()
{
    if (!m_hasFile)
        return false;
    m_file->Clear();
    return WriteBack();
}

bool CqxJSFile::WriteLn(wxString text)
{
    if (!m_hasFile)
        return false;
    m_file->AddLine(text);
    return WriteBack();
}
