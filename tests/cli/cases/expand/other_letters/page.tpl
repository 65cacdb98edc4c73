<%keep%>
ä [%name%] [%U"name"%] [%(GetProp("name").length)%]
<%/keep%>
