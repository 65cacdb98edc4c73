#include "tags/cond_define_script_detail.h"

#include "script/script.h"
#include "script/script_minimal.h"
#include "script/value_conversion.h"

namespace
{

const wxString GlobalName = wxS("Global");

/// The own enumerable properties of an object, as a scope guard over the engine's list.
class PropertyNames
{
public:
    PropertyNames(JSContext* cx, JSObject* object) : m_cx(cx), m_ids(JS_Enumerate(cx, object)) {}
    ~PropertyNames()
    {
        if (m_ids)
            JS_DestroyIdArray(m_cx, m_ids);
    }
    PropertyNames(const PropertyNames&) = delete;
    PropertyNames& operator=(const PropertyNames&) = delete;

    int Count() const { return m_ids ? m_ids->length : 0; }
    wxString Name(int index) const
    {
        jsval id = JSVAL_VOID;
        wxString name;
        if (JS_IdToValue(m_cx, m_ids->vector[index], &id))
            jsval_to_wxString(m_cx, id, name);
        return name;
    }

private:
    JSContext* m_cx;
    JSIdArray* m_ids;
};

/// Reads a property that holds a plain value.
bool ReadPlainProperty(JSContext* cx, JSObject* object, const wxString& name, wxString& text)
{
    jsval value = JSVAL_VOID;
    return JS_GetWideProperty(cx, object, name.wx_str(), name.length(), &value) && JSVAL_IS_PRIMITIVE(value) &&
           jsval_to_wxString(cx, value, text);
}

} // namespace

bool RunDefineScript(const wxString& script, const CJScript* like, NamedTexts& made)
{
    qxjsMinimal global;
    CJScript context(nullptr);
    context.SetLimitsLike(like);
    if (!context.SetGlobal(global.GetJSLink(), GlobalName) || !context.Evaluate(script, nullptr))
        return false;
    JSContext* const cx = context.GetContext();
    JSObject* const object = global.GetJSLink()->GetJSObject();
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    const PropertyNames names(cx, object);
    for (int i = 0; i < names.Count(); ++i) {
        const wxString name = names.Name(i);
        wxString text;
        if (name != GlobalName && ReadPlainProperty(cx, object, name, text))
            made.emplace_back(name, text);
    }
    return true;
}
