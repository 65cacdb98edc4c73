#pragma once

#include "base/api.h"
#include "engine/jsapi.h"

#include <wx/string.h>

#include <memory>
#include <vector>

class CJScriptLink;
class CJScriptLinkClass;

/// What a scriptable class shows to script: a constant table, one per class.
struct JSMap
{
    const char* name;          ///< The class's name in script.
    CJScriptLinkClass* parent; ///< The parent class's descriptor, or null.
};

/// The descriptor of a scriptable class: makes the class's script objects, one engine class per context.
class VC_QXPARSER_API CJScriptLinkClass
{
public:
    explicit CJScriptLinkClass(const JSMap* map) : m_map(map) {}
    virtual ~CJScriptLinkClass();

    CJScriptLinkClass(const CJScriptLinkClass&) = delete;
    CJScriptLinkClass& operator=(const CJScriptLinkClass&) = delete;

    const JSMap* GetMap() const { return m_map; }

    /// Makes the script object of `link` as the property `name` of `parent`'s object. Null on failure.
    JSObject* CreateObject(JSContext* cx, CJScriptLink* link, CJScriptLink* parent, const wxString& name);
    /// Makes the script object of `link` as the context's global object. Null on failure.
    JSObject* CreateGlobalObject(JSContext* cx, CJScriptLink* link);
    /// Makes a script object for `link` that nothing refers to yet. Null on failure.
    JSObject* CreateFreeObject(JSContext* cx, CJScriptLink* link);

    /// Throws an Error with this message into the running script.
    static void DeclareError(JSContext* cx, wxString message);

    /// Forgets what the descriptors keep for a context that is gone.
    static void DestroyContext(JSContext* cx);
    /// Forgets the prototypes of a context whose global object is gone.
    static void DestroyContextProto(JSContext* cx);

    /// The links whose native objects are deleted as soon as no script runs and none can reach them.
    static void AddToScopeList(CJScriptLink* link);
    static void RemoveFromScopeList(CJScriptLink* link);
    static void GCScopeList();

private:
    struct ClassContext
    {
        JSContext* context;
        JSClass jsClass;
    };

    const JSClass* EngineClass(JSContext* cx);

    static void Finalize(JSContext* cx, JSObject* obj);

    const JSMap* m_map;
    std::vector<std::unique_ptr<ClassContext>> m_contexts;
};
