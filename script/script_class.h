#pragma once

#include "base/api.h"
#include "engine/jsapi.h"
#include "script/class_map.h"

#include <wx/dynarray.h>
#include <wx/event.h>
#include <wx/hashmap.h>
#include <wx/string.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class CJScriptLink;
class CJScriptLinkClass;

/// A constructor of a scriptable class.
struct CJsCtorDescr
{
    JSNative native;        ///< what `new` runs
    unsigned int arguments; ///< how many it takes
    bool primary;           ///< whether it is the one for any number of arguments
};

/// What a class has in one engine context.
struct CJSLinkClassContext
{
    JSContext* context;            ///< the context this is about
    JSClass jsClass;               ///< the class as the engine knows it there
    JSObject* prototype = nullptr; ///< Rooted while it is set.
};

/// A class's records, one a context.
using CArrayJSLinkClassContext = std::vector<std::unique_ptr<CJSLinkClassContext>>;

/// Descriptors of classes, which are not owned.
WX_DEFINE_ARRAY_PTR(CJScriptLinkClass*, CArrayJSClassInfo);

/// From an event's type to the name of the script function that handles it.
WX_DECLARE_HASH_MAP(int, wxString, wxIntegerHash, wxIntegerEqual, CHaspEvt);

/// The descriptor of a scriptable class: a static object, built from the class's table on first use. Makes the class's
/// script objects, prototypes and constructors, and answers script's reads and writes of properties from the native
/// object's fields.
class VC_QXPARSER_API CJScriptLinkClass
{
public:
    /// The descriptor of the class that `classMap` describes; both must live as long as the library. `engineFlags`
    /// (JSCLASS_...) hold for the classes below it too; JSCLASS_HAS_LATE_CHILDREN is for objects that may have very
    /// many children without a name of their own.
    explicit CJScriptLinkClass(const JSMap* classMap, std::uint32_t engineFlags = JSCLASS_HAS_PRIVATE)
        : m_map(classMap), m_engineFlags(engineFlags)
    {}
    virtual ~CJScriptLinkClass();

    CJScriptLinkClass(const CJScriptLinkClass&) = delete;
    CJScriptLinkClass& operator=(const CJScriptLinkClass&) = delete;

    /// The class's table.
    const JSMap* GetMap() const { return m_map; }
    /// The parent class's descriptor; null for none.
    CJScriptLinkClass* GetParent() const { return m_map->parent; }
    /// Whether this is `other` or one of its descendants.
    bool IsKindOf(const CJScriptLinkClass* other) const;

    /// Builds the specifications, once. A table with more properties than tinyids, or more rows than indices, is logged
    /// and declared up to there.
    /// @return true.
    bool CreateSpec();

    ///@{
    /// Adds to what CreateSpec builds: a property that is answered by GetPropW and SetPropW (the latter unless `flags`
    /// has JSPROP_READONLY), or a native function that takes `nargs` arguments; the static ones go to the constructor.
    void AddPropSpec(const char* name, int tinyid, int flags);
    void AddStaticPropSpec(const char* name, int tinyid, int flags);
    void AddFuncSpec(const char* name, JSNative native, int nargs);
    void AddStaticFuncSpec(const char* name, JSNative native, int nargs);
    ///@}

    /// The class's prototype in a context, made on first use together with its constructor. Null on failure, and with
    /// `declareOnly`, which only prepares the class.
    JSObject* CreateProto(JSContext* cx, bool declareOnly);
    /// Defines constants, properties and functions on an object that does not inherit them, the parent class's first.
    bool AddPropFuncToObject(JSContext* cx, JSObject* object);

    /// Makes the script object of `link` as the property `name` (empty: the one after the address of its native object)
    /// of `parent`'s object. Null on failure.
    JSObject* CreateObject(JSContext* cx, CJScriptLink* link, CJScriptLink* parent, wxString name);
    /// Makes the script object of `link` as the context's global object, with every registered class. Null on failure.
    JSObject* CreateGlobalObject(JSContext* cx, CJScriptLink* link);
    /// Completes the properties of `link`'s script object: makes the script objects of the scriptable objects that its
    /// native object embeds. (Pointers get theirs when script reads them; all else is inherited from the prototype.)
    /// False when one cannot be made.
    bool CreatePropertiesObject(JSContext* cx, CJScriptLink* link);

    /// The row with this index or tinyid (an integer word), here or in a parent class; null when there is none.
    JSMapEntry* FindEntry(jsval id, bool byTinyId) const;
    /// Reads a property of the native object.
    bool GetEntryValue(JSContext* cx, JSMapEntry* entry, const CJScriptLink* link, jsval* value) const;

    ///@{
    /// The getter behind every property: reads the field of the native object. False, without a message, when there is
    /// no native object or no such property.
    static int GetPropW(JSContext* cx, JSObject* object, jsval id, jsval* vp);
    int GetPropW(const CJScriptLink* link, JSMapEntry* entry, jsval* vp) const;
    ///@}

    /// The setter behind every property: converts the value into the field. False for what cannot be written; an
    /// unknown property and a failed conversion are logged.
    static int SetPropW(JSContext* cx, JSObject* object, jsval id, jsval* vp);

    /// The number that a property is, where script can read and write it without the operations above.
    static JSNumberField NumberField(void* link, jsval id);

    /// Calls the object's script function for an event.
    /// @return whether there was one and it did not return false.
    bool ProcessEvent(CJScriptLink* link, wxEvent& event);
    /// Gives events of `type` a name by which tables can refer to them.
    static void NameEvent(const wxString& name, wxEventType type);

    /// Statements that give the fields of another object of the class the values that this one's have now, one a line:
    /// "this.NAME=VALUE;".
    wxString GetInitScript(const CJScriptLink* link) const;
    /// Writes them to a buffer, which moves behind them (and a NUL) while `room` (characters) shrinks.
    /// @return false, with nothing changed, when there is no room.
    bool GetInitScript_Inplace(const CJScriptLink* link, wchar_t*& buffer, int& room) const;

    /// Runs the constructor that takes this many arguments: what a primary constructor does.
    int CreateNewMulti(JSContext* cx, JSObject* object, unsigned int argc, jsval* argv, jsval* rval);

    /// Throws an Error with this message into the running script.
    static void DeclareError(JSContext* cx, wxString message);

    /// Called by the collector for each dead script object of a scriptable class.
    static void Finalize(JSContext* cx, JSObject* object);
    /// An object that others hold when its context has ended becomes an empty shell; the context's native objects end
    /// with it all the same.
    static void CutFromEndedContext(JSContext* cx, JSObject* object);
    /// Cuts a link from its script object: removes it from its parent's and, unless the class keeps it, makes it an
    /// empty shell. False when it has none.
    bool DeleteObject(CJScriptLink* link);
    /// Whether script objects keep their link when they are cut off or finalised; never when the link itself goes.
    void SetKeepPrivate(bool keep) { m_keepPrivate = keep; }

    /// This class's record for a context, made on first use.
    CJSLinkClassContext* GetClassContext(JSContext* cx);
    /// Forgets what all classes keep for a context that is gone.
    static void DestroyContext(JSContext* cx);
    /// Forgets the prototypes of a context whose global object is going.
    static void DestroyContextProto(JSContext* cx);

    ///@{
    /// The classes that every global object gets; a class's module registers and unregisters it. Registering twice is
    /// registering once.
    static bool RegisterJSClass(CJScriptLinkClass* cls);
    static void UnregisterJSClass(CJScriptLinkClass* cls);
    ///@}
    /// Those that are registered now, in the order in which they were.
    static CArrayJSClassInfo GetRegisteredClasses();

    /// Makes a class known in a context: its constructor where there is a global object, else only what every object of
    /// the class needs. False on failure.
    static bool DeclareJSClass(JSContext* cx, CJScriptLinkClass* cls);
    /// Makes all registered classes known in the context of a global object.
    static bool DeclareGlobal(CJScriptLink* global);

    ///@{
    /// The links whose native objects are deleted as soon as no script runs and no root of the host holds their script
    /// objects.
    static void AddToScopeList(CJScriptLink* link);
    static void RemoveFromScopeList(CJScriptLink* link);
    static void GCScopeList();
    ///@}

private:
    friend class CJScriptLink;

    JSObject* CreateFreeObject(JSContext* cx);
    bool AddRow(JSMapEntry& row);
    bool AddProperty(JSMapEntry& row);
    void AddConstToObject(JSContext* cx, JSObject* object);
    std::uint32_t EngineFlags() const;
    const JSClass* EngineClass(JSContext* cx);
    const CJsCtorDescr* Constructor() const;
    const wxString* FindHandler(wxEventType type) const;

    const JSMap* m_map;
    const std::uint32_t m_engineFlags;
    // Each list ends with an empty row, as the engine reads them.
    std::vector<JSPropertySpec> m_propertySpecs{JSPropertySpec{}};
    std::vector<JSFunctionSpec> m_functionSpecs{JSFunctionSpec{}};
    std::vector<JSPropertySpec> m_staticPropertySpecs{JSPropertySpec{}};
    std::vector<JSFunctionSpec> m_staticFunctionSpecs{JSFunctionSpec{}};
    std::atomic<bool> m_keepPrivate{false}; ///< Collections read it without the engine lock.
    std::uint32_t m_firstIndex = 0;
    std::uint32_t m_nextIndex = 0;
    std::vector<JSMapEntry*> m_rowsByTinyId; ///< Of the whole class chain; none has tinyid 0.
    std::vector<CJsCtorDescr> m_constructors;
    std::vector<const JSMapEntry*> m_constants;
    std::vector<const JSMapEntry*> m_embedded; ///< The rows of embedded scriptable objects.
    JSNative m_primaryNative = nullptr;
    unsigned int m_maxArgs = 0;
    CHaspEvt m_events;
    CArrayJSLinkClassContext m_contexts;
};
