#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>

/// The smallest scriptable object: no fields, no methods. Serves as an empty global object.
class VC_QXPARSER_API qxjsMinimal : public wxObject
{
public:
    /// An object without a script object.
    qxjsMinimal();

    qxjsMinimal(const qxjsMinimal&) = delete;
    qxjsMinimal& operator=(const qxjsMinimal&) = delete;

    ///@{
    /// What every scriptable class has: see CJScriptLink.
    virtual CJScriptLink* GetJSLink() { return &m_link; }
    virtual const CJScriptLink* GetJSLink() const { return &m_link; }
    virtual const JSMap* GetJSMap() const { return &m_JSMap; }

    static const JSMap m_JSMap;
    static CJScriptLinkClass ms_JSClass;
    ///@}

private:
    CJScriptLink m_link;

    wxDECLARE_CLASS(qxjsMinimal);
};
