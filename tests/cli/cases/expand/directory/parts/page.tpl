<%keep%>
[%name%]
<%/keep%>
