<%keep%>
Items of [%name%]
<%/keep%>
<%repeat filter="item"%>
[%++%] [%name%]
<%/repeat%>
