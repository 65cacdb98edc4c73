#include "base/file.h"

#include "base/file_state_detail.h"
#include "base/file_text_detail.h"
#include "base/utf8_text.h"

#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <unistd.h>
#include <utility>

using namespace vcq::detail;

wxIMPLEMENT_DYNAMIC_CLASS(CFile, wxObject);

namespace
{

template <typename Text> bool ReadWhole(FileState& state, CFile::eConvType conv, Text& text)
{
    try {
        if (state.IsReadable() && ReadText(state, RequestFor(state, conv), text))
            return true;
    } catch (const std::bad_alloc&) {
        state.Fail();
    } catch (const std::length_error&) {
        state.Fail();
    }
    Text none;
    std::swap(text, none);
    return false;
}

} // namespace

CFile::CFile() = default;
CFile::CFile(const CFile& other) = default;
CFile::CFile(std::shared_ptr<FileState> state) : m_state(std::move(state)) {}
CFile& CFile::operator=(const CFile& other) = default;
CFile::~CFile() = default;

CFile CFile::StandardInput()
{
    UniqueFd fd(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    return fd.IsOpen() ? CFile(std::make_shared<FileState>(std::move(fd), true, false)) : CFile();
}

bool CFile::IsOpened() const
{
    return m_state && m_state->IsOpen();
}

bool CFile::Read(wxString& text, eConvType conv)
{
    text.clear();
    return m_state && ReadWhole(*m_state, conv, text);
}

bool CFile::Read(CUtf8Text& text, eConvType conv)
{
    text = CUtf8Text();
    return m_state && ReadWhole(*m_state, conv, text);
}

wxString CFile::ReadLine(eConvType conv)
{
    wxString line;
    if (m_state && m_state->IsReadable())
        ReadTextLine(*m_state, RequestFor(*m_state, conv), line);
    return line;
}

bool CFile::Eof()
{
    if (!m_state || !m_state->IsReadable())
        return true;
    return m_state->WindowSize() == 0 && !m_state->Fill();
}

bool CFile::Error() const
{
    return m_state && m_state->HasFailed();
}

wxInputStream* CFile::GetInputStream() const
{
    return m_state ? m_state->Input() : nullptr;
}

wxOutputStream* CFile::GetOutputStream() const
{
    return m_state ? m_state->Output() : nullptr;
}

bool CFile::Close()
{
    return m_state && m_state->Close();
}
