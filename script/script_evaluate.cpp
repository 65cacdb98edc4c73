#include "script/log_detail.h"
#include "script/script.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <wx/log.h>

#include <utility>

/// One evaluation or call in progress on a context.
class CJScript::ScopeLevel
{
public:
    explicit ScopeLevel(CJScript& script) : m_script(script)
    {
        if (CJScript* const attached = Attached()) {
            if (!attached->m_runner && !attached->m_callsOnDestroy)
                attached->m_onDestroyTime = {};
            m_reportedBefore = std::exchange(attached->m_reported, false);
            m_runnerBefore = std::exchange(attached->m_runner, &script);
        }
        m_script.IncScopeLevel();
    }
    ~ScopeLevel()
    {
        m_script.DecScopeLevel();
        if (CJScript* const attached = Attached()) {
            attached->m_reported = m_reportedBefore;
            attached->m_runner = m_runnerBefore;
        }
    }
    ScopeLevel(const ScopeLevel&) = delete;
    ScopeLevel& operator=(const ScopeLevel&) = delete;

    /// Whether the engine has reported an error. What was run may have succeeded nevertheless: promise jobs run behind
    /// it, and a limit may stop those.
    bool HasReported() const
    {
        const CJScript* const attached = Attached();
        return attached && attached->m_reported;
    }

private:
    /// Asked for each time: what runs may end it, and then it is another.
    CJScript* Attached() const { return FromContext(m_script.m_context); }

    CJScript& m_script;
    bool m_reportedBefore = false;
    CJScript* m_runnerBefore = nullptr;
};

namespace
{

constexpr const char* EvaluatedFile = "local";

[[gnu::cold]] bool RefuseThread()
{
    wxLogError(wxS("CJScript called from another thread than the context's; refused"));
    return false;
}

[[gnu::cold]] void Log(const std::vector<wxString>& rejections)
{
    for (const wxString& message : rejections)
        LogWhole(wxLOG_Error, wxS("Unhandled promise rejection: ") + message);
}

} // namespace

/// The engine would refuse as well, but what is kept here must not be touched either.
inline bool CJScript::CheckThread() const
{
    return m_thread == std::this_thread::get_id() || RefuseThread();
}

/// Not where they are noted, which is inside the engine lock.
inline void CJScript::LogRejections()
{
    CJScript* const attached = FromContext(m_context);
    if (attached && !attached->m_rejections.empty())
        Log(std::exchange(attached->m_rejections, {}));
}

template <typename Convert> bool CJScript::EvaluateWith(const wxString& text, CJScriptLink* link, Convert convert)
{
    if (!CheckThread())
        return false;
    CleanError();
    if (!m_context)
        return false;
    const CJScriptLink* const target = link ? link : m_global;
    bool evaluated = false;
    {
        const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
        const ScopeLevel level(*this);
        jsval value = JSVAL_VOID;
        evaluated = JS_EvaluateWide(m_context, target ? target->GetJSObject() : nullptr, text.wx_str(), text.length(),
                                    EvaluatedFile, 0, &value) &&
                    !level.HasReported() && convert(value);
    }
    if (!evaluated)
        CommonReportError(link, text, nullptr, nullptr);
    LogRejections();
    return evaluated;
}

bool CJScript::Evaluate(const wxString& text, CJScriptLink* link)
{
    return EvaluateWith(text, link, [](jsval) { return true; });
}

bool CJScript::Evaluate(const wxString& text, CJScriptLink* link, bool& out)
{
    out = false;
    return EvaluateWith(text, link, [&](jsval value) {
        JSBool truth = JS_FALSE;
        out = JS_ValueToBoolean(m_context, value, &truth) && truth;
        return true;
    });
}

bool CJScript::Evaluate(const wxString& text, CJScriptLink* link, int& out)
{
    out = -1;
    return EvaluateWith(text, link, [&](jsval value) {
        out = JSVAL_IS_DOUBLE(value) ? TruncateToInt(*JSVAL_TO_DOUBLE(value)) : static_cast<int>(value >> 1);
        return true;
    });
}

bool CJScript::Evaluate(const wxString& text, CJScriptLink* link, wxString& out)
{
    out.clear();
    return EvaluateWith(text, link, [&](jsval value) {
        JSString* const string = JS_ValueToString(m_context, value);
        return string && JS_StringToWide(m_context, string, out);
    });
}

bool CJScript::Evaluate(const wxString& text, CJScriptLink* link, CJScriptLink*& out)
{
    bool isObject = false;
    CJScriptLink* found = nullptr;
    const bool evaluated = EvaluateWith(text, link, [&](jsval value) {
        isObject = jsval_to_pCJScriptLink(m_context, value, found);
        return true;
    });
    if (!evaluated || isObject)
        out = found;
    return evaluated && isObject;
}

bool CJScript::EvaluateValue(const wxString& text, CJScriptLink* link, jsval& out)
{
    out = JSVAL_VOID;
    return EvaluateWith(text, link, [&](jsval value) {
        out = value;
        return true;
    });
}

bool CJScript::Execute(const wxString& text, CJScriptLink* link, wxString* report)
{
    if (!m_global || !CheckThread())
        return false;
    if (text.empty())
        return true;
    m_hideError = false;
    if (Evaluate(text, link) || m_hideError)
        return true;
    CommonReportError(link, text, nullptr, report);
    return false;
}

JSFunction* CJScript::LookUpFunction(const wxString& name, CJScriptLink* link)
{
    if (!link || !link->GetJSObject() || !link->GetContext())
        return nullptr;
    const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
    jsval value = JSVAL_VOID;
    if (!JS_GetWideProperty(link->GetContext(), link->GetJSObject(), name.wx_str(), name.length(), &value) ||
        JSVAL_IS_PRIMITIVE(value) || !JS_ObjectIsFunction(link->GetContext(), JSVAL_TO_OBJECT(value)))
        return nullptr;
    return JS_ValueToFunction(link->GetContext(), value);
}

bool CJScript::HasFunction(const wxString& name, CJScriptLink* link)
{
    return LookUpFunction(name, link) != nullptr;
}

bool CJScript::Call(const wxString& name, CJScriptLink* link)
{
    return CallNamed(name, link, nullptr, 0, nullptr);
}

bool CJScript::Call(const wxString& name, CJScriptLink* link, wxString arg)
{
    if (!m_context || !CheckThread())
        return false;
    jsval value = JSVAL_VOID;
    {
        const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
        value = wxString_to_jsval(m_context, arg);
    }
    return CallNamed(name, link, nullptr, 1, &value);
}

bool CJScript::Call(const wxString& name, CJScriptLink* link, CJScriptLink* arg)
{
    jsval value = arg ? OBJECT_TO_JSVAL(arg->GetJSObject()) : JSVAL_NULL;
    return CallNamed(name, link, nullptr, 1, &value);
}

bool CJScript::CallWithRet(const wxString& name, CJScriptLink* link, int& ret)
{
    jsval value = JSVAL_VOID;
    const bool called = CallNamed(name, link, &value, 0, nullptr);
    ret = static_cast<int>(value);
    return called;
}

bool CJScript::CallWithRet(const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv)
{
    return CallNamed(name, link, ret, argc, argv);
}

bool CJScript::CallWithRet(JSFunction* fn, CJScriptLink* link, jsval* ret, int argc, jsval* argv)
{
    if (!CheckThread())
        return false;
    CleanError();
    if (!fn)
        return false;
    return CallReported(fn, wxString::FromUTF8(JS_GetFunctionName(fn)), link, ret, argc, argv);
}

bool CJScript::CallNamed(const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv)
{
    if (!CheckThread())
        return false;
    CleanError();
    JSFunction* const fn = LookUpFunction(name, link);
    return fn && CallReported(fn, name, link, ret, argc, argv);
}

bool CJScript::CallReported(JSFunction* fn, const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv)
{
    if (!m_context)
        return false;
    bool called = false;
    {
        const wxThreadCriticalSectionLocker lock(m_ThreadCriticalSection);
        const ScopeLevel level(*this);
        jsval value = JSVAL_VOID;
        called = JS_CallFunction(m_context, link ? link->GetJSObject() : nullptr, fn, static_cast<uintN>(argc), argv,
                                 &value) &&
                 !level.HasReported();
        if (ret)
            *ret = called ? value : JSVAL_VOID;
    }
    if (!called)
        CommonReportError(link, name, fn, nullptr);
    LogRejections();
    return called;
}
