#include "xml/xml_config.h"

#include "preprocessor/preprocessor.h"
#include "script/script.h"
#include "script/value_conversion.h"
#include "script/window_events.h"
#include "xml/xml_config_detail.h"
#include "xml/xml_config_registry_detail.h"

#include <wx/log.h>
#include <wx/weakref.h>
#include <wx/xml/xml.h>

#include <array>
#include <utility>

namespace
{

constexpr wxLogLevel NoticeLevel = wxLOG_User + 2;

constexpr const wchar_t* RootName = L"Config";

/// How the call of a hook went.
struct HookCall
{
    bool exists = false;
    bool completed = false;
    bool result = false; ///< What it returned, as a truth value.
};

/// Hooks in the order in which they are called. As texts, since they are looked up for every object.
using HookNames = std::array<wxString, 2>;

const HookNames& LoadHooks()
{
    static const HookNames names{wxS("LoadXmlConfig"), wxS("_LoadXmlConfig")};
    return names;
}

const HookNames& StoreHooks()
{
    static const HookNames names{wxS("StoreXmlConfig"), wxS("_StoreXmlConfig")};
    return names;
}

const wxString& DefaultHook()
{
    static const wxString name = wxS("_DefaultXmlConfig");
    return name;
}

HookCall CallHook(CJScript& script, CJScriptLink* link, const wxString& name, CXmlNode* section)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    HookCall call;
    JSFunction* const hook = link ? link->GetJSFunction(name) : nullptr;
    if (!hook)
        return call;
    call.exists = true;
    jsval argument = section ? OBJECT_TO_JSVAL(section->GetJSLink()->GetJSObject()) : JSVAL_NULL;
    jsval value = JSVAL_VOID;
    call.completed = script.CallWithRet(hook, link, &value, section ? 1 : 0, &argument);
    call.result = call.completed && jsval_to_bool(script.GetContext(), value, call.result) && call.result;
    return call;
}

bool HasHook(CJScriptLink* link, const wxString& name)
{
    const wxThreadCriticalSectionLocker lock(CJScript::EngineLock());
    return link && link->GetJSFunction(name);
}

/// The first child element of a name; the empty node without one. Texts and comments have names too.
CXmlNode* FindElement(CXmlNode* parent, const wxString& name)
{
    CXmlNode* node = parent->GetRawNode(name);
    while (node->Ok() && node->GetXmlNode()->GetType() != wxXML_ELEMENT_NODE)
        node = node->GetRawNextByName(name);
    return node;
}

} // namespace

CXmlConfig::CXmlConfig(CJScript* script, wxString name, CJScriptLink* parent, CDir dir, bool fileCode)
    : CXmlConfig(script, name, parent, dir, name, fileCode)
{}

CXmlConfig::CXmlConfig(CJScript* script, wxString objectName, CJScriptLink* parent, CDir dir, wxString fileName,
                       bool fileCode)
    : CXmlDocument(script, objectName, parent, &ms_JSClass),
      m_objects(std::make_unique<CHashMapCfgObject>(*CXmlDocument::GetJSLink())), m_directory(dir),
      m_fileCode(fileCode), m_mutex(dir.GetRealPath(fileName)), m_fileName(fileName)
{
    if (!m_directory.Ok())
        wxLogGeneric(NoticeLevel, wxS("CXmlConfig directory '%s' not found"), m_directory.GetFullPath());
}

CXmlConfig::~CXmlConfig()
{
    CallOnDestroyFunctions();
    m_objects->Clear();
    CutFromScript();
}

/// True, with an error in the log, when a hook calls what would call it again without end.
bool CXmlConfig::Refuses(Activity activity, const wxString& operation) const
{
    const bool refuses = m_activity == Activity::Storing || m_activity == activity;
    if (refuses)
        wxLogError(wxS("CXmlConfig::%s() called by a hook while '%s' is %s"), operation, m_fileName,
                   m_activity == Activity::Storing ? wxS("stored") : wxS("loaded"));
    return refuses;
}

void CXmlConfig::CreateEmtyConfig()
{
    SetRoot(RootName);
}

void CXmlConfig::CleanConfig()
{
    Clear();
}

CXmlNode* CXmlConfig::GetSectionNode(wxString path, bool create)
{
    if (create && !GetRawRoot())
        CreateEmtyConfig();
    CXmlNode* node = GetRawRoot();
    while (node && node->Ok() && !path.empty()) {
        wxString rest;
        const wxString name = path.BeforeFirst(wxS('/'), &rest);
        path = rest;
        if (name.empty())
            continue;
        CXmlNode* const child = FindElement(node, name);
        node = child->Ok() || !create ? child : node->AddRawNode(name);
    }
    return node ? node : GetEmptyNode();
}

/// Whether a hook has read the object's section.
bool CXmlConfig::LoadSection(const tCfgObject& object)
{
    const wxWeakRef<CJScriptLink> link(object.link);
    bool handled = false;
    for (const wxString& name : LoadHooks()) {
        // The hook is looked up before its section, as most sections have no handle yet and those of objects without
        // hooks need none. And the section each time: the first hook may have done anything.
        CXmlNode* const section = HasHook(link, name) ? GetSectionNode(object.section, false) : GetEmptyNode();
        if (!section->Ok())
            continue;
        const HookCall call = CallHook(*GetScript(), link, name, section);
        handled = name[0] == wxS('_') ? call.result : call.completed;
    }
    return handled;
}

void CXmlConfig::ObjectLoad(const tCfgObject& object)
{
    if (!GetScript() || !object.link)
        return;
    const wxWeakRef<CJScriptLink> link(object.link);
    if (!LoadSection(object))
        CallHook(*GetScript(), link, DefaultHook(), nullptr);
}

bool CXmlConfig::ObjectStore(const tCfgObject& object)
{
    if (!GetScript())
        return true;
    const wxWeakRef<CJScriptLink> link(object.link);
    bool cleared = false;
    for (const wxString& name : StoreHooks()) {
        if (!HasHook(link, name))
            continue;
        if (!cleared)
            GetSectionNode(object.section, true)->Clear();
        cleared = true;
        // Only now: script that hears of the end of what was in it may have removed the section.
        CXmlNode* const section = GetSectionNode(object.section, true);
        if (!section->Ok())
            return false;
        if (!CallHook(*GetScript(), link, name, section).result)
            return false;
    }
    return cleared || MakeSection(object.section);
}

/// Makes a section that is missing; what is there gets no handle for this. False when it cannot be.
bool CXmlConfig::MakeSection(const wxString& path)
{
    CXmlNode* const parent = GetSectionNode(path.BeforeLast(wxS('/')), true);
    const wxString name = path.AfterLast(wxS('/'));
    return name.empty() || parent->HasNode(name) || GetSectionNode(path, true)->Ok();
}

/// Loads a registered object, which until then counts as not loaded.
void CXmlConfig::LoadRegistered(unsigned long id)
{
    CHashMapCfgObject::Entry* entry = m_objects->Get(id);
    if (!entry)
        return;
    entry->pending = true;
    const tCfgObject object = entry->object;
    ObjectLoad(object);
    entry = m_objects->Get(id);
    if (entry)
        entry->pending = false;
}

void CXmlConfig::ObjectLoad(const wxString& name)
{
    LoadRegistered(m_objects->Find(CPreprocessor::ToKeyword(name)));
}

void CXmlConfig::ObjectLoad(CJScriptLink* link)
{
    LoadRegistered(m_objects->Find(link));
}

bool CXmlConfig::ObjectStore(const wxString& name)
{
    const CHashMapCfgObject::Entry* const entry = m_objects->Get(m_objects->Find(CPreprocessor::ToKeyword(name)));
    return entry && ObjectStore(tCfgObject(entry->object));
}

bool CXmlConfig::ObjectStore(CJScriptLink* link)
{
    const CHashMapCfgObject::Entry* const entry = m_objects->Get(m_objects->Find(link));
    return entry && ObjectStore(tCfgObject(entry->object));
}

void CXmlConfig::LoadAll()
{
    if (Refuses(Activity::Loading, wxS("LoadAll")))
        return;
    const Busy busy(m_activity, Activity::Loading);
    const CHashMapCfgObject::Id last = m_objects->Last();
    for (CHashMapCfgObject::Id id = m_objects->Next(0); id && id <= last; id = m_objects->Next(id))
        m_objects->Get(id)->pending = true;
    // What hooks register is behind the last one, and loaded already.
    for (CHashMapCfgObject::Id id = m_objects->Next(0); id && id <= last; id = m_objects->Next(id))
        LoadRegistered(id);
}

bool CXmlConfig::StoreAll()
{
    if (Refuses(Activity::Storing, wxS("StoreAll")))
        return false;
    const Locks locks(*this);
    const Busy busy(m_activity, Activity::Storing);
    const CHashMapCfgObject::Id last = m_objects->Last();
    for (CHashMapCfgObject::Id id = m_objects->Next(0); id && id <= last; id = m_objects->Next(id)) {
        const CHashMapCfgObject::Entry& entry = *m_objects->Get(id);
        if (!entry.pending && !ObjectStore(tCfgObject(entry.object)))
            return false;
    }
    return true;
}

void CXmlConfig::StoreObjectConfig(const wxString& name)
{
    ObjectStore(name);
}

void CXmlConfig::StoreObjectsConfig(const wxArrayString& names)
{
    for (const wxString& name : names)
        ObjectStore(name);
}

/// Registers an object; false when it cannot be.
bool CXmlConfig::AddObject(CJScriptLink* link, const wxString& name, const wxString& section, unsigned long& id)
{
    if (!link || name.empty())
        return false;
    const wxString keyword = CPreprocessor::ToKeyword(name);
    const wxString path = section.empty() ? keyword : CPreprocessor::ToKeyword(section) + wxS("/") + keyword;
    id = m_objects->Set(keyword, tCfgObject{link, path});
    return true;
}

void CXmlConfig::ObjectRegisterNamed(CJScriptLink* link, wxString name, wxString section)
{
    unsigned long id = 0;
    if (AddObject(link, name, section, id))
        LoadRegistered(id);
}

void CXmlConfig::ObjectRegisterNamedNoLoad(CJScriptLink* link, wxString name, wxString section)
{
    unsigned long id = 0;
    AddObject(link, name, section, id);
}

void CXmlConfig::ObjectRegister(CJScriptLink* link, wxString section)
{
    wxString name;
    if (link && GetWindowName(link->GetRootObject(), name))
        ObjectRegisterNamed(link, name, section);
}

void CXmlConfig::ObjectRegisterNamedNoSect(CJScriptLink* link, wxString name)
{
    ObjectRegisterNamed(link, name, wxString());
}

void CXmlConfig::ObjectRegisterNoSect(CJScriptLink* link)
{
    ObjectRegister(link, wxString());
}

void CXmlConfig::ObjectUnregister(const wxString& name)
{
    m_objects->Erase(m_objects->Find(CPreprocessor::ToKeyword(name)));
}

void CXmlConfig::ObjectUnregister(CJScriptLink* link)
{
    m_objects->Erase(m_objects->Find(link));
}

bool CXmlConfig::HasObject(const wxString& name) const
{
    return m_objects->Find(CPreprocessor::ToKeyword(name)) != 0;
}

bool CXmlConfig::HasObject(const CJScriptLink* link) const
{
    return m_objects->Find(link) != 0;
}

void CXmlConfig::CleanObjects()
{
    m_objects->Clear();
}
