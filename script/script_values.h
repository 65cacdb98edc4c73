#pragma once

#include "base/api.h"
#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/object.h>

#include <cstdint>

/// Carries a native pointer through script, which can only hold it and pass it back (and make null ones). The pointer
/// is not owned.
class VC_QXPARSER_API qxjsPointer : public wxObject
{
public:
    /// Carries `value`; there is no script object yet.
    explicit qxjsPointer(void* value = nullptr);

    ///@{
    /// The pointer.
    void* GetValue() const { return m_value; }
    void SetValue(void* value) { m_value = value; }
    ///@}

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
    CJScriptLink m_link;
    void* m_value;

    wxDECLARE_CLASS(qxjsPointer);
};

/// Carries a size through script, which can only hold it and pass it back. `new size_t(number)` truncates toward 0,
/// holds at most 4294967295, and takes a negative number as the int of the same bits.
class VC_QXPARSER_API qxjsSize_t : public wxObject
{
public:
    /// Carries `value`; there is no script object yet.
    explicit qxjsSize_t(std::uint32_t value);

    ///@{
    /// The size.
    std::uint32_t GetValue() const { return m_value; }
    void SetValue(std::uint32_t value) { m_value = value; }
    ///@}

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
    CJScriptLink m_link;
    std::uint32_t m_value;

    wxDECLARE_CLASS(qxjsSize_t);
};
