// Made from model.xml; changes here are lost.
#pragma once
#include "enums.h"
<%keep%>
namespace [%namespace%] {
<%/keep%>
<%repeat filter="class"%>
<%keep%>
/// [%doc|Without a description.%]
class [%name%][%(HasProp('base') ? ' : public ' + GetProp('base') : '')%]
{
public:
<%repeat filter="method"%>
<%if cond="HasProp('doc')"%>
    /// [%doc%]
<%/if%>
<%keep%>
    [%returns|void%] [%name%]([%(parameters(this))%]);
<%/keep%>
<%/repeat%>
<%if cond="GetCountOf('field') > 0"%>
private:
<%repeat filter="field"%>
    [%type%] m_[%name%] = [%value|{}%];[%(HasProp('doc') ? ' ///< ' + GetProp('doc') : '')%]
<%/repeat%>
<%/if%>
<%keep%>
};
<%/keep%>
<%/keep%>
<%/repeat%>
<%keep%>
} // namespace [%namespace%]
<%/keep%>
