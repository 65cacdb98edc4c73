#pragma once

#include "preprocessor/plain_expression_detail.h"

#include <wx/string.h>

#include <optional>
#include <string_view>
#include <vector>

class WXDLLIMPEXP_FWD_XML wxXmlAttribute;
class WXDLLIMPEXP_FWD_XML wxXmlNode;

/// How many children a node has; 0 for null.
int ChildCount(const wxXmlNode* node);

/// The first attribute of these names that there is, by the order of the names; null for none.
const wxXmlAttribute* FindAttribute(const wxXmlNode* node, const std::vector<wxString>& names);

/// The methods of a node that only read it.
class NodeFunctions : public PlainFunctions
{
public:
    explicit NodeFunctions(const wxXmlNode* node) : m_node(node) {}

    std::optional<PlainValue> Call(std::wstring_view name, const wxString* argument) const override;

private:
    const wxXmlNode* m_node;
};
