#ifdef old
old
#endif
#include "head.tpl"
<%repeat filter="item"%>
// one line each
#title: [%name%]
<%/repeat%>
