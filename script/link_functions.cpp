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
    if (!m_functions) {
        m_functions = std::make_unique<Functions>();
        m_functions->script = script;
        script->KeepsFunctions(this, true);
    }
    m_functions->kept.push_back(function);
    JS_AddRoot(m_functions->script->GetContext(), &m_functions->kept.back());
}

void CJScriptLink::RemoveFunction(JSFunction* function)
{
    if (!m_functions)
        return;
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    auto& kept = m_functions->kept;
    const auto found = std::find(kept.begin(), kept.end(), function);
    if (found == kept.end())
        return;
    JS_RemoveRoot(m_functions->script->GetContext(), &*found);
    kept.erase(found);
    if (kept.empty()) {
        ForgetFunctions();
        return;
    }
    // Nothing keeps it alive until it would be called.
    if (std::find(kept.begin(), kept.end(), function) == kept.end()) {
        auto& onDestroy = m_functions->onDestroy;
        onDestroy.erase(std::remove(onDestroy.begin(), onDestroy.end(), function), onDestroy.end());
    }
}

void CJScriptLink::ForgetFunctions()
{
    const std::unique_ptr<Functions> forgotten = std::move(m_functions);
    if (!forgotten)
        return;
    for (JSFunction*& function : forgotten->kept)
        JS_RemoveRoot(forgotten->script->GetContext(), &function);
    forgotten->script->KeepsFunctions(this, false);
}

void CJScriptLink::JS_RegisterCallOnDestroy(JSFunction* function)
{
    if (!function)
        return;
    AddFunction(function);
    if (m_functions)
        m_functions->onDestroy.push_back(function);
}

void CJScriptLink::CallJS_OnDestroy()
{
    if (!m_functions)
        return;
    const wxWeakRef<CJScriptLink> self(this);
    // What is registered from here on is left out: a function that registers itself would be called for ever.
    for (std::size_t left = m_functions->onDestroy.size(); left > 0; --left) {
        if (!m_functions || m_functions->onDestroy.empty())
            return;
        JSFunction* const function = m_functions->onDestroy.front();
        m_functions->onDestroy.erase(m_functions->onDestroy.begin());
        // Behind the script object, `this` is the global object.
        m_functions->script->CallOnDestroy(function, m_jsObject ? this : nullptr);
        if (!self)
            return;
        RemoveFunction(function);
    }
    while (HasOnDestroyFunctions()) {
        JSFunction* const late = m_functions->onDestroy.back();
        m_functions->onDestroy.pop_back();
        RemoveFunction(late);
    }
}
