#include "base/file.h"
#include "base/utf8_text.h"
#include "parser/parser.h"
#include "parser/parser_unit.h"
#include "preprocessor/directive_line_detail.h"
#include "preprocessor/nested_text_detail.h"
#include "preprocessor/preprocessor.h"

#include <wx/filename.h>

#include <memory>
#include <string>
#include <utility>

namespace
{

/// The place of an included file: beside the including one, unless its name begins with a separator.
wxString IncludedPath(const wxString& name, const wxString& includingFile)
{
    wxString path = name;
    const bool isAbsolute = !name.empty() && (name[0] == L'\\' || name[0] == L'/');
    if (!isAbsolute) {
        const size_t separator = includingFile.find_last_of(L"/\\");
        if (separator != wxString::npos)
            path.insert(0, includingFile, 0, separator + 1);
    }
    path.Replace(wxS("\\"), wxString(wxFileName::GetPathSeparator()));
    path.Replace(wxS("/"), wxString(wxFileName::GetPathSeparator()));
    return path;
}

/// An interpreter line ("#!") is a comment.
CUtf8Text WithoutInterpreterLine(CUtf8Text text)
{
    if (text.Bytes().size() <= 2 || text.Bytes().compare(0, 2, "#!") != 0)
        return text;
    std::string bytes = text.TakeBytes();
    bytes.replace(0, 2, "//");
    return *CUtf8Text::FromBytes(std::move(bytes));
}

} // namespace

long CPreprocessor::DirectiveInclude(CDirectiveLine& line)
{
    line.output.clear();
    line.position.m_unit.Get(); // while it is in its slot: what is inserted moves it
    const long result = Include(line.Rest(), line.position);
    return result == 1 ? -1 : result;
}

void CPreprocessor::IncludeRead(const wxString& WXUNUSED(path)) {}

long CPreprocessor::Include(const wxString& argument, _BlockPosition& position)
{
    wxString name = argument;
    TrimLeft(name, L" \"<");
    TrimRight(name, L" \">");
    if (m_includeDepth >= m_limits.includeDepth)
        return Fail(wxString::Format(wxS("Include file '%s' nested deeper than %u"), name, m_limits.includeDepth),
                    position.m_unit);

    CUtf8Text text;
    const wxString path = IncludedPath(name, position.m_unit->GetFileName());
    CFile file = m_dir.OpenFile(path, wxFile::read);
    if (!file.IsOpened()) {
        Fail(wxString::Format(wxS("Include file not found '%s' from '%s'"), name, m_dir.GetFullPath()),
             position.m_unit);
        return 1;
    }
    if (!file.Read(text, CFile::convDefault)) {
        Fail(wxString::Format(wxS("Include file not readable '%s'"), name), position.m_unit);
        return 1;
    }
    // Files including each other must not pile up open descriptors.
    file.Close();
    IncludeRead(path);
    const CNestedText nested(m_sections.size(), m_sectionBase, m_includeDepth);
    return nested.Insert(*m_parser, WithoutInterpreterLine(std::move(text)), name, position.m_unit, true,
                         {path, nullptr}, position);
}
