#include "script/class_module.h"
#include "script/native_function.h"
#include "xml/script_argument_detail.h"
#include "xml/xml_node.h"

JSMapEntry CXmlNode::m_JSMapEntries[] = {
    JSMethodWithoutArguments<&CXmlNode::GetChildren>("GetChildren"),
    JSMethodWithoutArguments<&CXmlNode::GetChildren>("GetFirst"),
    JSMethodWithoutArguments<&CXmlNode::GetNext>("GetNext"),
    JSMethod<&CXmlNode::GetNextByName>("GetNextByName"),
    JSMethodWithoutArguments<&CXmlNode::GetPrevious>("GetPrevious"),
    JSMethod<&CXmlNode::GetPreviousByName>("GetPreviousByName"),
    JSMethodWithoutArguments<&CXmlNode::GetParent>("GetParent"),
    JSMethod<&CXmlNode::GetNode>("GetNode"),
    JSMethod<&CXmlNode::AddNode>("AddNode"),
    JSMethod<&CXmlNode::RemoveNode>("RemoveNode"),
    JSMethod<&CXmlNode::AddNode>("AddChild"),
    JSMethodWithoutArguments<&CXmlNode::Clear>("Clear"),
    JSMethodWithoutArguments<&CXmlNode::ClearProps>("ClearProps"),
    JSMethodWithoutArguments<&CXmlNode::RemoveChildren>("RemoveChildren"),
    JSMethod<&CXmlNode::HasNode>("HasNode"),
    JSMethodWithoutArguments<&CXmlNode::GetNodeContent>("GetNodeContent"),
    JSMethodWithoutArguments<&CXmlNode::GetNodeContent>("GetContent"),
    JSMethodWithoutArguments<&CXmlNode::GetName>("GetName"),
    JSMethod<&CXmlNode::SetName>("SetName"),
    JSMethod<&CXmlNode::HasProp>("HasProp"),
    JSMethod<&CXmlNode::GetPropOrNothing>("GetProp"),
    JSMethodWithoutArguments<&CXmlNode::GetChildrenCount>("GetChildrenCount"),
    JSMethod<&CXmlNode::GetChildrenCountOf>("GetChildrenCountOf"),
    JSMethodWithoutArguments<&CXmlNode::GetChildrenCount>("GetCount"),
    JSMethod<&CXmlNode::GetChildrenCountOf>("GetCountOf"),
    JSMethodWithoutArguments<&CXmlNode::GetAllProps>("GetAllProps"),
    JSMethod<&CXmlNode::GetAllPropsBefore>("GetAllPropsBefore"),
    JSMethod<&CXmlNode::GetAllPropsAfter>("GetAllPropsAfter"),
    JSMethodWithoutArguments<&CXmlNode::IsFirst>("IsFirst"),
    JSMethodWithoutArguments<&CXmlNode::IsLast>("IsLast"),
    JSMethodWithoutArguments<&CXmlNode::IsAlone>("IsAlone"),
    JSMethodWithoutArguments<&CXmlNode::IsMiddle>("IsMiddle"),
    JSMethod<&CXmlNode::AddPropIfOk>("AddProp"),
    JSMethod<&CXmlNode::DelProp>("DelProp"),
    JSMethodWithoutArguments<&CXmlNode::Ok>("Ok"),
    JSMethodWithoutArguments<&CXmlNode::GetChildrenDepth>("GetChildrenDepth"),
    JSMethod<&CXmlNode::ItemAt>("Item"),
    JSMethodWithoutArguments<&CXmlNode::GetIndex>("GetIndex"),
    JSMethodWithoutArguments<&CXmlNode::GetNodeString>("GetNodeString"),
    JSMapEntry(),
};
const JSMap CXmlNode::m_JSMap{"CXmlNode", &CJScriptLink::ms_JSClass, m_JSMapEntries};
CJScriptLinkClass CXmlNode::ms_JSClass(&CXmlNode::m_JSMap);

JS_REGISTER_CLASS_MODULE(CXmlNode)

wxString CXmlNode::GetPropOrNothing(const wxString& name) const
{
    return GetPropW(name, wxString());
}

bool CXmlNode::AddPropIfOk(const wxString& name, const xml_detail::TextArgument& value)
{
    AddProp(name, value.value);
    return Ok();
}

CJScriptLink* CXmlNode::ItemAt(const xml_detail::NumberArgument& index)
{
    return Item(index.value);
}
