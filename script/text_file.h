#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>
#include <wx/string.h>
#include <wx/textfile.h>

#include <cstddef>

/// A local text file, held in memory line by line: the script class "TextFile".
class VC_QXPARSER_API CqxJSFile : public wxObject
{
public:
    CqxJSFile();

    CqxJSFile(const CqxJSFile&) = delete;
    CqxJSFile& operator=(const CqxJSFile&) = delete;

    /// Reads a file, whose encoding is detected; the path is what CDir::ResolvePath takes. A file that is open is
    /// closed first, also when this fails.
    bool Open(wxString path);
    /// Makes a new, empty file. False when there is one of that name already.
    bool Create(wxString path);
    bool IsOpened();
    void Close();

    /// Whether all lines have been read.
    bool Eof();
    /// The next line, without its line end; empty behind the last one.
    wxString ReadLn();
    /// All lines, each followed by "\n". Does not move the place that ReadLn reads from.
    wxString ReadAll();

    /// Takes all lines away and writes the file.
    bool Clear();
    /// Appends a line and writes the file.
    bool WriteLn(wxString text);

    virtual CJScriptLink* GetJSLink() { return &m_link; }
    virtual const CJScriptLink* GetJSLink() const { return &m_link; }
    virtual const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static JSMapEntry m_JSMapEntries[];
    static CJScriptLinkClass ms_JSClass;

private:
    bool Resolve(wxString& path);
    bool WriteBack();

    wxTextFile m_file;
    CJScriptLink m_link;
    std::size_t m_position = 0;

    wxDECLARE_CLASS(CqxJSFile);
};
