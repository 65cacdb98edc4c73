#pragma once

#include "base/posix_detail.h"

#include <wx/textfile.h>

/// A wxTextFile whose calls of the system go on after a signal. wxTextFile takes an interrupted one for a failure.
/// Writing it back is the user's.
class CTextLines : public wxTextFile
{
protected:
    bool OnOpen(const wxString& path, wxTextBufferOpenMode mode) override;
    bool OnRead(const wxMBConv& conv) override;
    bool OnClose() override;

private:
    bool Split(const wxString& text);

    vcq::detail::UniqueFd m_fd;
};
