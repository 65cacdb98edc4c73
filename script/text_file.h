#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>
#include <wx/string.h>
#include <wx/textfile.h>

#include <cstddef>
#include <memory>

/// A local text file, held in memory line by line: the script class "TextFile".
class VC_QXPARSER_API CqxJSFile : public wxObject
{
public:
    /// No file yet.
    CqxJSFile();
    ~CqxJSFile() override;

    CqxJSFile(const CqxJSFile&) = delete;
    CqxJSFile& operator=(const CqxJSFile&) = delete;

    /// Reads a file, whose encoding is detected; the path is what CDir::ResolvePath takes. A file that is open is
    /// closed first, also when the new one cannot be read; a text that is no path leaves it open, to be read from its
    /// start.
    bool Open(wxString path);
    /// Makes a new, empty file. False when there is one of that name already.
    bool Create(wxString path);
    /// Whether a file has been read by Open. One that Create has made is written without being open.
    bool IsOpened();
    /// Closes the file; what was written is on disk already.
    void Close();

    /// Whether all lines have been read.
    bool Eof();
    /// The next line, without its line end; empty behind the last one.
    wxString ReadLn();
    /// All lines, each followed by "\n". Does not move the place that ReadLn reads from.
    wxString ReadAll();

    /// Takes all lines away and writes the file. This and WriteLn are false without a file.
    bool Clear();
    /// Appends a line that ends with "\n", and writes the file: in UTF-8 without a byte order mark, with the ends that
    /// its other lines have. A last line that had no end gets none, so the text is continued there.
    bool WriteLn(wxString text);

    ///@{
    /// What every scriptable class has: see CJScriptLink.
    virtual CJScriptLink* GetJSLink() { return &m_link; }
    virtual const CJScriptLink* GetJSLink() const { return &m_link; }
    virtual const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;
    ///@}

private:
    bool Resolve(wxString& path);
    bool WriteBack();

    const std::unique_ptr<wxTextFile> m_file;
    CJScriptLink m_link;
    std::size_t m_position = 0;
    bool m_hasFile = false; ///< Opened or created: there is something to write to.

    wxDECLARE_CLASS(CqxJSFile);
};
