text
<%keep%>
<%if cond="true"%>
<%/keep%>
