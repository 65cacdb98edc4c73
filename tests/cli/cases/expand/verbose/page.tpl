text
<%keep%>
more
<%/keep%>
