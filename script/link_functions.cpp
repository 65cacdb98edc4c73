#include "script/script.h"
#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/weakref.h>

#include <algorithm>
#include <utility>

JSFunction* CJScriptLink::GetJSFunction(const wxString& name) const
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    jsval value = JSVAL_VOID;
    if (!m_jsObject || !JS_GetWideProperty(m_context, m_jsObject, name.wx_str(), name.length(), &value) ||
        JSVAL_IS_PRIMITIVE(value) || !JS_ObjectIsFunction(m_context, JSVAL_TO_OBJECT(value)))
        return nullptr;
    return JS_ValueToFunction(m_context, value);
}

bool CJScriptLink::CallWith(JSFunction* function, bool& result, int argc, jsval* argv)
{
    CJScript* const script = GetScript();
    if (!script || !function)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    JSContext* const cx = m_context;
    jsval value = JSVAL_VOID;
    if (!script->CallWithRet(function, this, &value, argc, argv))
        return false;
    result = true;
    return JSVAL_IS_VOID(value) || jsval_to_bool(cx, value, result);
}

bool CJScriptLink::CallFunction(JSFunction* function, bool& result)
{
    return CallWith(function, result, 0, nullptr);
}

bool CJScriptLink::CallFunction(JSFunction* function, bool& result, const wxString& argument)
{
    if (!m_context)
        return false;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    jsval value = wxString_to_jsval(m_context, argument);
    return CallWith(function, result, 1, &value);
}

bool CJScriptLink::CallFunction(JSFunction* function, bool& result, CJScriptLink* argument)
{
    jsval value = pCJScriptLink_to_jsval(m_context, argument);
    return CallWith(function, result, 1, &value);
}

void CJScriptLink::AddFunction(JSFunction* function)
{
    CJScript* const script = GetScript();
    if (!function || !script)
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    if (m_functions.empty()) {
        m_functionScript = script;
        script->KeepsFunctions(this, true);
    }
    m_functions.push_back(function);
    JS_AddRoot(script->GetContext(), &m_functions.back());
}

void CJScriptLink::RemoveFunction(JSFunction* function)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    const auto found = std::find(m_functions.begin(), m_functions.end(), function);
    if (found == m_functions.end())
        return;
    JS_RemoveRoot(m_functionScript->GetContext(), &*found);
    m_functions.erase(found);
    if (m_functions.empty())
        std::exchange(m_functionScript, nullptr)->KeepsFunctions(this, false);
}

void CJScriptLink::ForgetFunctions()
{
    if (CJScript* const script = std::exchange(m_functionScript, nullptr)) {
        for (JSFunction*& function : m_functions)
            JS_RemoveRoot(script->GetContext(), &function);
        script->KeepsFunctions(this, false);
    }
    m_functions.clear();
    m_onDestroy.clear();
}

void CJScriptLink::JS_RegisterCallOnDestroy(JSFunction* function)
{
    if (!function)
        return;
    AddFunction(function);
    if (m_functionScript)
        m_onDestroy.push_back(function);
}

void CJScriptLink::CallJS_OnDestroy()
{
    const wxWeakRef<CJScriptLink> self(this);
    // What is registered from here on comes too late: a function that registers itself would be called for ever.
    for (std::size_t left = m_onDestroy.size(); left > 0 && !m_onDestroy.empty() && m_functionScript; --left) {
        JSFunction* const function = m_onDestroy.front();
        m_onDestroy.erase(m_onDestroy.begin());
        if (m_functionScript->HasOutlivedItsEnd())
            return;
        // Behind the script object, `this` is the global object.
        m_functionScript->CallWithRet(function, m_jsObject ? this : nullptr, nullptr, 0, nullptr);
        if (!self)
            return;
        RemoveFunction(function);
    }
}
