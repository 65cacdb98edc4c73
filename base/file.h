#pragma once

#include "base/api.h"

#include <memory>
#include <wx/object.h>
#include <wx/stream.h>
#include <wx/string.h>

namespace vcq::detail
{
class FileState;
}

class CUtf8Text;

/// An open file, handed out by CDir. Copies share the open file and the place in it; it is closed by Close, or with the
/// last copy. Texts, lines and the streams may be mixed: each goes on where the one before has stopped. Nothing is
/// logged; a caller reports what concerns its user. One file is used by one thread at a time.
class VC_QXPARSER_API CFile : public wxObject
{
    wxDECLARE_DYNAMIC_CLASS(CFile);

public:
    /// How the bytes of a text become characters. An encoding with a byte order mark of its own skips that mark, and
    /// only that; a text that is not what the encoding says fails.
    enum eConvType
    {
        convDefault = 0, ///< as the directory says that opened the file (CDir::SetAutoFileCode); if it says nothing,
                         ///< by the byte order mark (UTF-8, UTF-16, UTF-32), without one UTF-8 if all of the text is
                         ///< UTF-8, else Latin-1
        convLocale = 1,  ///< as the locale of the process says
        convUtf16 = 2,   ///< UTF-16, little-endian if no mark says otherwise; a lone surrogate stays as it is
        convUtf8 = 3     ///< UTF-8
    };

    /// A file that is not open.
    CFile();

    ///@{
    /// A copy shares the open file, and the place in it.
    CFile(const CFile& other);
    CFile& operator=(const CFile& other);
    ///@}

    /// With the last copy the file is closed. One from CDir::CreateFileW that was not closed by Close is discarded.
    ~CFile() override;

    /// The standard input of the process, which stays open when this file is closed.
    static CFile StandardInput();

    ///@{
    /// Whether the file is open.
    bool IsOpened() const;
    bool Ok() const { return IsOpened(); }
    ///@}

    /// Reads the whole rest of the file into `text`; line ends and NULs stay as they are. At the end of the file the
    /// rest is the empty text. False, with `text` empty, when the file is not open for reading, when reading fails,
    /// when the bytes are no text in the encoding, or when there is not enough memory.
    bool Read(wxString& text, eConvType conv = convDefault);

    /// The same for a text that stays UTF-8, at a quarter of the memory.
    bool Read(CUtf8Text& text, eConvType conv = convDefault);

    /// The next line without its line end, which is LF, CR LF or CR; the last one need not have any. Empty at the end
    /// of the file and when it is not open for reading: Eof tells that from an empty line. What has no byte order mark
    /// is UTF-8 or Latin-1 as a whole, like Read has it; only from a pipe, or a member of an archive, it is Latin-1
    /// from the first line on that is not UTF-8. A line that does not fit an encoding asked for is read as Latin-1, and
    /// Error is true from then on.
    wxString ReadLine(eConvType conv = convDefault);

    /// True when nothing is left to read: at the end, after a failure, and when the file is not open for reading. From
    /// a pipe or a terminal it waits for the next byte.
    bool Eof();

    /// True when reading, writing or converting has failed since the file was opened.
    bool Error() const;

    ///@{
    /// The streams over the open file, as bytes: no encoding applies, a byte order mark is not skipped. Null when the
    /// file is not open that way. They belong to the file and end with its last copy. What is written is held back in
    /// part, so only Close tells whether all of it arrived; texts are written as ToUtf8 (base/text_encoding.h) gives
    /// them. The input stream can seek where the system can.
    wxInputStream* GetInputStream() const;
    wxOutputStream* GetOutputStream() const;
    ///@}

    /// Closes the file, for all copies. For one from CDir::CreateFileW this is the moment when it appears under its
    /// name, complete and flushed to the disk. False when the file was not open, and when anything written has not
    /// arrived: then nothing has appeared, and a file that was to be replaced is as before. (The one exception is a
    /// failure of the very last step, telling the disk of the new name: then the complete new file is there.)
    bool Close();

private:
    friend class CDir;
    explicit CFile(std::shared_ptr<vcq::detail::FileState> state);

    std::shared_ptr<vcq::detail::FileState> m_state;
};
