#include "parser/parser.h"

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"

#include <wx/sysopt.h>

#include <utility>

wxIMPLEMENT_CLASS(CParser, wxObject);

bool CParser::ms_bUseDebugContext = false;

CParser::CParser()
{
    ms_bUseDebugContext = wxSystemOptions::GetOptionInt(wxS("tavoli.pp.debugcontext")) != 0;
}

CParser::CParser(CPreprocessor* pp) : m_pp(pp), m_ppExternal(true)
{
    if (pp)
        m_dir = pp->GetDir();
}

CParser::CParser(const CParser& other) = default;
CParser& CParser::operator=(const CParser& other) = default;

CParser::~CParser()
{
    CParser::Clean();
}

CParserBlock* CParser::CreateBlock(bool detached)
{
    auto* const block = new CParserBlock(detached ? nullptr : this);
    if (!detached)
        m_blocks.Add(block);
    return block;
}

int CParser::RemoveBlock(CParserBlock* block)
{
    // Blocks are taken out last in, first out by includes and loops.
    const int index = m_blocks.Index(block, true);
    if (index == wxNOT_FOUND)
        return 0;
    m_blocks.RemoveAt(index);
    return 1;
}

long CParser::ParseBlock(CParserBlock* WXUNUSED(block))
{
    return 1;
}

void CParser::Init()
{
    Clean();
}

void CParser::Clean()
{
    for (CParserBlock* block : m_blocks)
        delete block;
    m_blocks.Empty();
    // The message stays readable; the unit it concerns has gone with its block.
    m_errorUnit = nullptr;
    m_files.clear();
    if (!m_ppExternal) {
        delete m_pp;
        m_pp = nullptr;
    }
    m_removeDefines = nullptr;
}

void CParser::PreparePreprocessor()
{
    if (m_pp) {
        m_pp->SetParser(this);
        return;
    }
    m_pp = new CPreprocessor(this, true);
    m_pp->SetDir(m_dir);
    m_ppExternal = false;
}

wxSharedPtr<CParserFile> CParser::AddFile(const wxString& name, const CParserUnit* from, wxString& key,
                                          const CTextOrigin& origin)
{
    wxSharedPtr<CParserFile> file(new CParserFile(this, from));
    file->m_path = origin.path;
    file->m_loopLines = origin.loopLines;
    key = name.empty() ? wxString::Format(wxS("pf_%p"), static_cast<void*>(file.get())) : name;
    m_files[key] = file;
    return file;
}

long CParser::Parse(const wxString& text, const wxString& fileName, const CParserUnit* from, bool removeDefines)
{
    return Parse(text, fileName, from, removeDefines, CTextOrigin());
}

long CParser::Parse(const wxString& text, const wxString& fileName, const CParserUnit* from, bool removeDefines,
                    const CTextOrigin& origin)
{
    if (!removeDefines || !m_removeDefines)
        return ParseText<const wxString&>(text, fileName, from, origin);
    wxString stripped = text;
    CPreprocessor::BufferInPlaceRemoveDefines(stripped, m_removeDefines);
    return ParseText<const wxString&>(stripped, fileName, from, origin);
}

long CParser::Parse(CUtf8Text text, const wxString& fileName, const CParserUnit* from, bool removeDefines,
                    const CTextOrigin& origin)
{
    if (removeDefines && m_removeDefines)
        return Parse(text.ToWide(), fileName, from, removeDefines, origin);
    return ParseText(std::move(text), fileName, from, origin);
}

template <typename Text>
long CParser::ParseText(Text text, const wxString& fileName, const CParserUnit* from, const CTextOrigin& origin)
{
    PreparePreprocessor();
    wxString key;
    const wxSharedPtr<CParserFile> file = AddFile(fileName, from, key, origin);
    CParserBlock* const block = CreateBlock(false);
    file->Load(std::forward<Text>(text), key, block, m_keepEmptyLines);
    return m_pp->PreprocessBlock(block);
}

std::unique_ptr<CParserBlock> CParser::CutLines(CUtf8Text text, const wxString& fileName, const CParserUnit* from,
                                                const CTextOrigin& origin)
{
    wxString key;
    const wxSharedPtr<CParserFile> file = AddFile(fileName, from, key, origin);
    auto lines = std::make_unique<CParserBlock>(nullptr);
    file->Load(std::move(text), key, lines.get(), m_keepEmptyLines);
    return lines;
}

long CParser::ParseLines(const CParserBlock& lines)
{
    PreparePreprocessor();
    CParserBlock* const block = CreateBlock(false);
    block->AddCopies(lines);
    return m_pp->PreprocessBlock(block);
}

void CParser::SetDir(CDir& dir)
{
    m_dir = dir;
    if (m_pp)
        m_pp->SetDir(dir);
}

CParserBlock* CParser::GetLastBlock(int remove)
{
    CParserBlock* const block = m_blocks.Last();
    if (remove)
        m_blocks.RemoveAt(m_blocks.GetCount() - 1);
    return block;
}

void CParser::SetError(const wxString& message, const CParserUnit* unit)
{
    m_lastError = message;
    m_errorUnit = unit;
}

void CParser::GetLastError(wxString* message, const CParserUnit** unit) const
{
    if (message)
        *message = m_lastError;
    if (unit)
        *unit = m_errorUnit;
}

void CParser::GetLastErrorStr(wxString* message) const
{
    *message = m_lastError;
}

void CParser::ClearError()
{
    SetError(wxString(), nullptr);
}

wxSharedPtr<CParserFile> CParser::GetFileRef(CParserFile* file)
{
    const auto found = m_files.find(file->GetName());
    return found == m_files.end() ? wxSharedPtr<CParserFile>() : found->second;
}

wxSharedPtr<CParserFile> CParser::GetFile(const wxString& name, CParserUnit* from)
{
    const auto found = m_files.find(name);
    if (found != m_files.end())
        return found->second;
    wxString key;
    wxSharedPtr<CParserFile> file = AddFile(name, from, key, CTextOrigin());
    // An empty text makes no unit, so the block is not touched: this only names the file.
    file->Load(wxString(), key, m_blocks.IsEmpty() ? nullptr : m_blocks.Last(), m_keepEmptyLines);
    return file;
}
