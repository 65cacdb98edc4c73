// Made from model.xml; changes here are lost.
#pragma once
<%keep%>
namespace [%namespace%] {
<%/keep%>
<%repeat filter="enum"%>
<%keep DEFINE="type='[%name%]'"%>
/// [%doc|Without a description.%]
enum class [%name%]
{
<%repeat filter="value"%>
    [%name%] = [%++%],
<%/repeat%>
<%keep%>
};
/// The text of a value, null for a number that is none.
inline const char* textOf([%name%] value)
{
    switch (value) {
<%/keep%>
<%repeat filter="value"%>
    case [%#type%]::[%name%]: return [%"text|name|"%];
<%/repeat%>
<%keep%>
    }
    return nullptr;
}
<%/keep%>
<%/keep%>
<%/repeat%>
<%keep%>
} // namespace [%namespace%]
<%/keep%>
