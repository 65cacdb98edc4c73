#include "script/class_module.h"
#include "script/native_function.h"
#include "xml/script_argument_detail.h"
#include "xml/xml_config.h"

namespace
{

/// A method whose first argument is the object of a native one. Any other, which would be ignored, is refused aloud.
template <auto Function> JSBool CallWithObject(JSContext* cx, JSObject* object, uintN argc, jsval* argv, jsval* rval)
{
    CJScriptLink* link = nullptr;
    const bool counts = argc == script_detail::FunctionTraits<decltype(Function)>::count;
    if (counts && (!jsval_to_pCJScriptLink(cx, argv[0], link) || !link))
        return script_detail::FailArgument(cx, 1, JSConversion<CJScriptLink*>::name);
    return script_detail::CallNative<Function>(cx, object, argc, argv, rval);
}

template <auto Function> JSMapEntry ObjectMethod(const char* name)
{
    return JSMapEntry(name, &CallWithObject<Function>, script_detail::FunctionTraits<decltype(Function)>::count);
}

} // namespace

JSMapEntry CXmlConfig::m_JSMapEntries[] = {
    ObjectMethod<&CXmlConfig::JS_Register>("Register"),
    ObjectMethod<&CXmlConfig::JS_RegisterNamed>("RegisterNamed"),
    ObjectMethod<&CXmlConfig::JS_RegisterSection>("RegisterSection"),
    ObjectMethod<&CXmlConfig::JS_RegisterNamedSection>("RegisterNamedSection"),
    JSMethodWithoutArguments<&CXmlConfig::JS_SaveFile>("SaveFile"),
    JSMethodWithoutArguments<&CXmlConfig::JS_LoadFile>("LoadFile"),
    ObjectMethod<&CXmlConfig::JS_ObjectStore>("ObjectStore"),
    ObjectMethod<&CXmlConfig::JS_ObjectLoad>("ObjectLoad"),
    JSMapEntry(),
};
const JSMap CXmlConfig::m_JSMap{"CXmlConfig", &CXmlDocument::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass CXmlConfig::ms_JSClass(&CXmlConfig::m_JSMap);

JS_REGISTER_CLASS_MODULE(CXmlConfig)

void CXmlConfig::JS_Register(CJScriptLink* link)
{
    ObjectRegister(link, wxString());
}

void CXmlConfig::JS_RegisterNamed(CJScriptLink* link, const xml_detail::TextArgument& name)
{
    ObjectRegisterNamed(link, name.value, wxString());
}

void CXmlConfig::JS_RegisterSection(CJScriptLink* link, const xml_detail::TextArgument& section)
{
    ObjectRegister(link, section.value);
}

void CXmlConfig::JS_RegisterNamedSection(CJScriptLink* link, const xml_detail::TextArgument& name,
                                         const xml_detail::TextArgument& section)
{
    ObjectRegisterNamed(link, name.value, section.value);
}

bool CXmlConfig::JS_SaveFile()
{
    return SaveFile(true);
}

bool CXmlConfig::JS_LoadFile()
{
    LoadFile();
    return m_loaded;
}

bool CXmlConfig::JS_ObjectStore(CJScriptLink* link)
{
    return ObjectStore(link);
}

void CXmlConfig::JS_ObjectLoad(CJScriptLink* link)
{
    ObjectLoad(link);
}
