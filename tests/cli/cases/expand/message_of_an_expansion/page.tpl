<%keep%>
text
<%repeat name="items" filter="item"%>
<%if cond="price > 1"%>
<%keep/%>
<%/if%>
<%/repeat%>
<%/keep%>
