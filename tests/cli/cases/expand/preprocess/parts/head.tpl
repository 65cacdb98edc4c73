<%keep%>
== #title ==
<%/keep%>
