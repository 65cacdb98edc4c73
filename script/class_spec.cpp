#include "script/script_class.h"
#include "script/script_link.h"

#include <wx/log.h>

#include <algorithm>
#include <limits>

namespace
{

constexpr int EnumeratePermanent = JSPROP_ENUMERATE | JSPROP_PERMANENT;
constexpr std::uint8_t KindGroup = 0xc0;
constexpr std::uint32_t LastTinyId = std::numeric_limits<std::uint8_t>::max();

/// Puts a row before the empty one that ends the list.
template <typename Row> void AddBeforeEnd(std::vector<Row>& rows, const Row& row)
{
    rows.insert(rows.end() - 1, row);
}

/// The names of events, for tables that do not know their numbers.
CHaspEvt& EventNames()
{
    static CHaspEvt names;
    return names;
}

bool EventTypeOf(const wxString& text, int& type)
{
    long number = 0;
    if (text.ToLong(&number)) {
        type = static_cast<int>(number);
        return true;
    }
    for (const auto& entry : EventNames()) {
        if (entry.second == text) {
            type = entry.first;
            return true;
        }
    }
    return false;
}

} // namespace

bool CJScriptLinkClass::CreateSpec()
{
    if (m_firstIndex > 0)
        return true;
    CJScriptLinkClass* const parent = GetParent();
    if (parent)
        parent->CreateSpec();
    m_firstIndex = m_nextIndex = parent ? parent->m_nextIndex : 1;
    m_rowsByTinyId = parent ? parent->m_rowsByTinyId : std::vector<JSMapEntry*>(1);
    for (JSMapEntry* row = m_map->entries; row && row->name; ++row) {
        if (!AddRow(*row))
            return true;
    }
    return true;
}

/// False when the class has run out of numbers.
bool CJScriptLinkClass::AddRow(JSMapEntry& row)
{
    int type = 0;
    if (row.kind == JSMapEntry::Constant) {
        m_constants.push_back(&row);
        return true;
    }
    if ((row.kind & KindGroup) == JSMapEntry::Constructor) {
        const bool primary = row.kind == JSMapEntry::PrimaryConstructor;
        m_constructors.push_back({row.native, row.extra, primary});
        if (primary)
            m_primaryNative = row.native;
        m_maxArgs = std::max(m_maxArgs, row.extra);
    } else if ((row.kind & KindGroup) == JSMapEntry::Method)
        AddBeforeEnd(m_functionSpecs, {row.name, row.native, row.extra, 0, 0, row.number});
    else if (row.kind == JSMapEntry::Event) {
        if (EventTypeOf(row.text, type))
            m_events[type] = wxString(row.name, wxConvUTF8);
    } else if (!AddProperty(row))
        return false;
    row.index = m_nextIndex++;
    if (row.kind == JSMapEntry::Object)
        m_embedded.push_back(&row);
    if (m_nextIndex != 0)
        return true;
    wxLogError(wxS("CJScriptLinkClass::CreateSpec Too many Properties/Methods/Ctor for %s"), m_map->name);
    return false;
}

bool CJScriptLinkClass::AddProperty(JSMapEntry& row)
{
    if (m_rowsByTinyId.size() > LastTinyId) {
        wxLogError(wxS("CJScriptLinkClass::CreateSpec Too many Properties for %s"), m_map->name);
        return false;
    }
    row.tinyid = static_cast<std::uint8_t>(m_rowsByTinyId.size());
    m_rowsByTinyId.push_back(&row);
    AddPropSpec(row.name, row.tinyid, EnumeratePermanent);
    return true;
}

void CJScriptLinkClass::AddPropSpec(const char* name, int tinyid, int flags)
{
    const bool readOnly = (flags & JSPROP_READONLY) != 0;
    AddBeforeEnd(m_propertySpecs, {name, tinyid, static_cast<uintN>(flags), &CJScriptLinkClass::GetPropW,
                                   readOnly ? nullptr : &CJScriptLinkClass::SetPropW, &CJScriptLinkClass::NumberField});
}

void CJScriptLinkClass::AddStaticPropSpec(const char* name, int tinyid, int flags)
{
    const bool readOnly = (flags & JSPROP_READONLY) != 0;
    AddBeforeEnd(m_staticPropertySpecs,
                 {name, tinyid, static_cast<uintN>(flags), &CJScriptLinkClass::GetPropW,
                  readOnly ? nullptr : &CJScriptLinkClass::SetPropW, &CJScriptLinkClass::NumberField});
}

void CJScriptLinkClass::AddFuncSpec(const char* name, JSNative native, int nargs)
{
    AddBeforeEnd(m_functionSpecs, {name, native, static_cast<uintN>(nargs), 0, 0});
}

void CJScriptLinkClass::AddStaticFuncSpec(const char* name, JSNative native, int nargs)
{
    AddBeforeEnd(m_staticFunctionSpecs, {name, native, static_cast<uintN>(nargs), 0, 0});
}

void CJScriptLinkClass::AddConstToObject(JSContext* cx, JSObject* object)
{
    for (const JSMapEntry* row : m_constants) {
        jsval value = JSVAL_VOID;
        JS_NewNumberValue(cx, static_cast<std::int32_t>(row->extra), &value);
        JS_DefineProperty(cx, object, row->name, value, nullptr, nullptr,
                          JSPROP_ENUMERATE | JSPROP_READONLY | JSPROP_PERMANENT);
    }
}

bool CJScriptLinkClass::AddPropFuncToObject(JSContext* cx, JSObject* object)
{
    CreateSpec();
    if (GetParent() && !GetParent()->AddPropFuncToObject(cx, object))
        return false;
    AddConstToObject(cx, object);
    return JS_DefineProperties(cx, object, m_propertySpecs.data()) &&
           JS_DefineProperties(cx, object, m_staticPropertySpecs.data()) &&
           JS_DefineFunctions(cx, object, m_functionSpecs.data()) &&
           JS_DefineFunctions(cx, object, m_staticFunctionSpecs.data());
}

/// The constructor that script's `new` runs, null when the class has none.
const CJsCtorDescr* CJScriptLinkClass::Constructor() const
{
    // The last primary one counts.
    const auto primary = std::find_if(m_constructors.rbegin(), m_constructors.rend(),
                                      [](const CJsCtorDescr& ctor) { return ctor.primary; });
    if (primary != m_constructors.rend())
        return &*primary;
    return m_constructors.empty() ? nullptr : &m_constructors.front();
}

JSObject* CJScriptLinkClass::CreateProto(JSContext* cx, bool declareOnly)
{
    CJSLinkClassContext* const record = GetClassContext(cx);
    if (record->prototype)
        return record->prototype;
    CreateSpec();
    JSObject* const parentProto = GetParent() ? GetParent()->CreateProto(cx, declareOnly) : nullptr;
    if (declareOnly)
        return nullptr;
    const CJsCtorDescr* const constructor = Constructor();
    const unsigned int arguments = m_primaryNative ? m_maxArgs : constructor ? constructor->arguments : 0;
    JSObject* const prototype =
        JS_InitClass(cx, JS_GetGlobalObject(cx), parentProto, &record->jsClass,
                     constructor ? constructor->native : nullptr, arguments, m_propertySpecs.data(),
                     m_functionSpecs.data(), m_staticPropertySpecs.data(), m_staticFunctionSpecs.data());
    if (!prototype)
        return nullptr;
    record->prototype = prototype;
    JS_AddRoot(cx, &record->prototype);
    AddConstToObject(cx, prototype);
    return prototype;
}

int CJScriptLinkClass::CreateNewMulti(JSContext* cx, JSObject* object, unsigned int argc, jsval* argv, jsval* rval)
{
    const auto fitting = std::find_if(m_constructors.begin(), m_constructors.end(), [&](const CJsCtorDescr& ctor) {
        return !ctor.primary && ctor.arguments == argc;
    });
    if (fitting != m_constructors.end())
        return fitting->native(cx, object, argc, argv, rval);
    DeclareError(
        cx, wxString::Format(wxS("Bad argument count for constructor '%s' (%d)"), m_map->name, static_cast<int>(argc)));
    return JS_FALSE;
}

void CJScriptLinkClass::NameEvent(const wxString& name, wxEventType type)
{
    EventNames()[type] = name;
}

const wxString* CJScriptLinkClass::FindHandler(wxEventType type) const
{
    for (const CJScriptLinkClass* cls = this; cls; cls = cls->GetParent()) {
        const auto found = cls->m_events.find(type);
        if (found != cls->m_events.end())
            return &found->second;
    }
    return nullptr;
}

bool CJScriptLinkClass::ProcessEvent(CJScriptLink* link, wxEvent& event)
{
    const wxString* const handler = FindHandler(event.GetEventType());
    JSFunction* const function = handler ? link->GetJSFunction(*handler) : nullptr;
    bool handled = false;
    return function && link->CallFunction(function, handled) && handled;
}
