#pragma once

#include "base/api.h"
#include "base/file.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>
#include <wx/string.h>

/// A file to read at a location that CDir::ExtractDir knows: the script class "URLFile".
class VC_QXPARSER_API CJSURLFile : public wxObject
{
public:
    /// No file yet.
    CJSURLFile();

    CJSURLFile(const CJSURLFile&) = delete;
    CJSURLFile& operator=(const CJSURLFile&) = delete;

    /// Opens the file `name` of the directory that CDir::ExtractDir makes of `location`, `path` and `encoding`.
    bool Open(const wxString& location, const wxString& name, const wxString& path, const wxString& encoding);
    /// Whether a file is open.
    bool IsOpened();
    /// Closes the file; nothing happens when none is open.
    void Close();
    /// The next line; empty at the end and when no file is open.
    wxString ReadLn();
    /// The rest of the file; empty when no file is open.
    wxString ReadAll();

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
    CFile m_file;
    CJScriptLink m_link;

    wxDECLARE_CLASS(CJSURLFile);
};
