<%keep%>
[%name%] [%title|name|none%] [%#define%] [%#define|[none]%] [%++%] [%++1%]
[%"name"%] [%U'name'%] [%'(1 + 1)'%] [%(GetName() + '-' + "[%x%]")%] [% id %]
[%(
  GetCount())%] text ( with #name | "quotes" %]
<%/keep%>
  <%REPEAT='outer' count="[%n%] + 1" filter='item' node="/list.Item(2)"
      DEFINE="of='[%name%]'; twice=2 * [%++%]"
      GLOBAL_UNDEF=made,optional%>
<%if name='dear' cond='[%price%] > 1 && HasProp("x")'%>text <%keep%> is content
<%/if='dear'%>
<%elseif cond="true"%><%/elseif%><%else/%>
<%unknown%><%/unknown%>
<%/REPEAT%>
<%keep GLOBAL_DEFINE="made='by hand'"/%>
<%?xml version="1.0"?%>
<%! a declaration %>
<%<%keep='double' node="a"%>%>
<%if cond="1"%> is content of [%name%]
<%<%keep/%>%>
<%<%keep%>%>
inner
<%<%/keep%>%>
<%<%/keep='double'%>%>
<%if cond="unclosed
 %>
