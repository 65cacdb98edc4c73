#pragma once

#include "base/api.h"
#include "base/thread_critical_section.h"
#include "engine/jsapi.h"

#include <wx/object.h>
#include <wx/string.h>
#include <wx/thread.h>

#include <chrono>
#include <cstddef>
#include <thread>
#include <unordered_set>
#include <vector>

class CJScriptLink;
class CJScriptLinkClass;

/// A host's handle on one script context: evaluates text, calls functions, and turns every script error into a record
/// and a formatted report.
///
/// Script errors never raise in the host: operations return false (or the stated failure value), the errors can be read
/// until the next operation (GetErrorCount, GetError), and the report goes to the log at level 103. A context is used
/// on the thread that made it; a call from another is refused with a logged error. All contexts of the process share
/// one engine lock, held around every call into the engine.
class VC_QXPARSER_API CJScript : public wxObject
{
public:
    /// One recorded error.
    struct VC_QXPARSER_API CJScriptError
    {
        /// The message with the name of the error's type in front: "TYPE: MESSAGE".
        wxString FullMsg() const;

        wxString msg;   ///< The message, without the error's type.
        int line = 0;   ///< Counted from 0 at the first line of the evaluated text.
        int column = 0; ///< Characters between the start of the line and the offending token; 0 when unknown.
        int type = 0;   ///< The flags of the engine's report.
    };

    /// @param cx null to make a context of this object's own; else a context to use, which stays the caller's and must
    ///        outlive this object.
    explicit CJScript(JSContext* cx);
    ~CJScript() override;

    ///@{
    /// Copies share the context and own nothing. They are inert once the context has ended.
    CJScript(const CJScript& other);
    CJScript& operator=(const CJScript& other);
    ///@}

    /// Drops errors, scripts and the global object, and ends an own context. The object is inert then.
    /// @return true.
    bool CleanAll();

    /// Makes `link`'s script object the global object of the context, and binds `name` (unless empty) to it as a
    /// constant. `link` stays the caller's and must live until RemoveGlobal or the end of this object.
    /// @return false when a global is already set, `link` is null, or the object cannot be made.
    bool SetGlobal(CJScriptLink* link, const wxString& name);
    /// Gives the global object up and collects; the collection is outside of the engine lock.
    void RemoveGlobal();
    /// Whether there is a global object that SetGlobal has made.
    bool HasGlobal() const { return m_global != nullptr; }
    /// Its link, not owned; null when there is none.
    CJScriptLink* GetGlobal() const { return m_global; }
    /// Empties an object's scope. The global link gets a fresh global object, not bound to a name; when it was bound to
    /// one, that forgets the recorded errors and ends HideError, as an Execute does.
    void ClearScope(CJScriptLink* link);

    /// Makes the script object of `child` as the property `name` of `parent`'s object. The last two arguments are those
    /// of CJScriptLink::CreateObject.
    /// @return false without a parent (logged at level 102) or when the object cannot be made.
    bool CreateChild(CJScriptLink* child, CJScriptLink* parent, const wxString& name, bool first, bool dynamic);
    /// Makes a script object that owns the child's native object.
    bool CreateChildDynamic(CJScriptLink* child);
    /// The link of the object that is the property `name` of `parent`'s object; null when there is none.
    CJScriptLink* GetChild(CJScriptLink* parent, const wxString& name);
    /// What CJScriptLinkClass::CreateNewMulti of the class does.
    int CreateNewMulti(CJScriptLinkClass* cls, JSContext* cx, JSObject* object, unsigned int argc, jsval* argv,
                       jsval* rval);

    /// Evaluates a text on the object of `link` (null: the global object). A failure is reported.
    bool Evaluate(const wxString& text, CJScriptLink* link);
    /// `out`: the truth value of the result; false after a failure.
    bool Evaluate(const wxString& text, CJScriptLink* link, bool& out);
    /// `out`: the result, when it is a number, truncated toward 0. Any other result gives its raw word shifted right by
    /// one; -1 after a failure.
    bool Evaluate(const wxString& text, CJScriptLink* link, int& out);
    /// `out`: the result as text; empty after a failure.
    bool Evaluate(const wxString& text, CJScriptLink* link, wxString& out);
    /// `out`: the link of the resulting object, null for the null object and for objects without one; null after a
    /// failure. A result that is no object returns false, leaves `out` as it is and reports nothing.
    bool Evaluate(const wxString& text, CJScriptLink* link, CJScriptLink*& out);

    /// `out`: the result word, which lives as engine/js_gc.h says; JSVAL_VOID after a failure.
    bool EvaluateValue(const wxString& text, CJScriptLink* link, jsval& out);

    /// Evaluates a text in a context that has a global. After a failure `report` (may be null) receives the formatted
    /// report, unless HideError was called meanwhile: then the failure is kept quiet and the result is true.
    /// @return true for an empty text; false without a global.
    bool Execute(const wxString& text, CJScriptLink* link, wxString* report);

    /// Whether the object of `link` has a function of this name. False for a null `link`.
    bool HasFunction(const wxString& name, CJScriptLink* link);

    ///@{
    /// Calls a function of `link`'s object, which is its `this`. Returns false, unreported, when there is no such
    /// function, and false, reported, when it fails.
    bool Call(const wxString& name, CJScriptLink* link);
    bool Call(const wxString& name, CJScriptLink* link, wxString arg);
    ///@}

    /// A null `arg` passes the null object.
    bool Call(const wxString& name, CJScriptLink* link, CJScriptLink* arg);
    /// `ret` receives the raw result word, not shifted.
    bool CallWithRet(const wxString& name, CJScriptLink* link, int& ret);

    ///@{
    /// `ret` (may be null) receives the result word, JSVAL_VOID after a failure.
    bool CallWithRet(const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv);
    bool CallWithRet(JSFunction* fn, CJScriptLink* link, jsval* ret, int argc, jsval* argv);
    ///@}

    /// Keeps further errors from being recorded until the next Execute.
    void HideError() { m_hideError = true; }
    /// The number of errors recorded since the last operation began.
    int GetErrorCount() const { return static_cast<int>(m_errors.size()); }
    /// The error `i`, counted from 0, below GetErrorCount(). Valid until the next operation.
    CJScriptError* GetError(int i) { return &m_errors[i]; }
    /// Forgets the recorded errors.
    void CleanError()
    {
        m_errors.clear();
        m_silentFailure.clear();
    }
    /// Text that follows the next formatted report, under " Call stack is:".
    void SetCallStack(const wxString& callStack) { m_callStack = callStack; }
    /// For natives that fail without a message: notes what failed and where script stands ("FILE (LINE)", innermost
    /// first). That is the call stack of a report that has no error to tell of, unless SetCallStack has given it one.
    /// The first note of an operation counts.
    static void NoteSilentFailure(JSContext* cx, const wxString& what);

    /// The text that script makes of a value, as jsval_to_wxString.
    wxString JSValToString(jsval& v);
    /// The pointer that a script object made by pwxObject_to_jsval carries; null when the value is none.
    wxObject* JSValToObject(jsval& v);

    ///@{
    /// Marks the start and the end of something that keeps script's objects in use. At the end of the outermost one,
    /// objects queued with CJScriptLink::SetScopeDelete are deleted.
    void IncScopeLevel();
    void DecScopeLevel();
    ///@}

    /// The engine's context; null once it has ended.
    JSContext* GetContext() const { return m_context; }

    /// Stops a script that runs longer than this, with an error that script cannot catch. 0: no limit.
    void SetTimeLimit(long milliseconds);
    /// Stops a script while which the process has grown by more than this. 0: no limit.
    void SetMemoryLimit(size_t bytes);
    /// Sets the limits that another context has; those of null are none.
    void SetLimitsLike(const CJScript* other);

    /// Where the running script stands: the innermost frame's line and file. False, with both untouched, when none
    /// runs.
    bool GetCurrentLineInfo(int* line, wxString* file);

    /// Formats the recorded errors (or, without any, the exception that is pending, or where script stands), hands the
    /// report to `out` when that is not null, and logs it.
    /// @param source the evaluated text, or what to show of it; @param fn the function that failed, null for an
    /// evaluation.
    void CommonReportError(CJScriptLink* link, const wxString& source, JSFunction* fn, wxString* out);

    /// Called for every error report of the engine; records it. A host may override it.
    virtual void ReportError(const wxString& message, JSErrorReport* report);

    /// The engine lock: held around every call into the engine, by all contexts. Re-entrant.
    static wxThreadCriticalSection& EngineLock() { return m_ThreadCriticalSection; }

    /// The handle on an engine context, null when it has none.
    static CJScript* FromContext(JSContext* cx)
    {
        return cx ? static_cast<CJScript*>(JS_GetContextPrivate(cx)) : nullptr;
    }

    /// Whether an evaluation or call is in progress on the calling thread, in whichever context.
    static bool IsRunning();

    /// Notes whether a link keeps functions of this context alive, so that it hears of the context's end.
    void KeepsFunctions(CJScriptLink* link, bool keeps);

    /// Calls an on-destroy function. Those that come with one operation of the host, behind it or with the end of the
    /// context have the time limit once together, as each has its own and many of them could take for ever; nothing is
    /// called once it is used up.
    void CallOnDestroy(JSFunction* function, CJScriptLink* link);

    /// Has every handle give up `link` as its global. For links that end.
    static void ForgetGlobal(const CJScriptLink* link);

private:
    class ScopeLevel;

    bool CheckThread() const;
    void Attach();
    void Detach();
    bool GiveUpGlobal(CJScriptLink* removed);
    void CallOnDestroyFunctions();
    void ForgetKeptFunctions();
    void BindName(CJScriptLink* link, const wxString& name);
    template <typename Convert> bool EvaluateWith(const wxString& text, CJScriptLink* link, Convert convert);
    JSFunction* LookUpFunction(const wxString& name, CJScriptLink* link);
    bool CallNamed(const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv);
    bool CallReported(JSFunction* fn, const wxString& name, CJScriptLink* link, jsval* ret, int argc, jsval* argv);
    void RecordPendingException();

    static void NoteRejection(JSContext* cx, const wchar_t* message);
    void LogRejections();
    static void MyJSErrorReporter(JSContext* cx, const char* message, JSErrorReport* report);
    JSTrapStatus TrapHandler();
    static JSTrapStatus MyJSTrapHandler(JSContext* cx, JSScript* script, jsbytecode* pc, jsval* rval, void* closure);

    JSContext* m_context;
    CJScriptLink* m_global = nullptr;
    JSScript* m_script = nullptr;
    bool m_hideError = false;
    bool m_reported = false; ///< The engine has reported an error of an outermost operation.
    std::vector<CJScriptError> m_errors;
    wxString m_callStack;
    wxString m_silentFailure; ///< See NoteSilentFailure.
    bool m_ownsContext;
    JSRuntime* m_runtime = nullptr;
    int m_scopeLevel = 0;
    CJScript* m_runner = nullptr; ///< Of a context's attached handle: the one whose operation is in progress.
    std::vector<wxString> m_rejections;
    std::thread::id m_thread = std::this_thread::get_id();
    bool m_ownsGlobal = false;
    std::chrono::milliseconds m_timeLimit{0};
    std::chrono::steady_clock::duration m_onDestroyTime{0}; ///< That on-destroy functions have taken.
    bool m_callsOnDestroy = false;
    void* m_previousPrivate = nullptr;
    std::unordered_set<CJScriptLink*> m_functionKeepers;

    static wxThreadCriticalSection m_ThreadCriticalSection;
    static wxCriticalSection m_CriticalSection;

    wxDECLARE_CLASS(CJScript);
};
