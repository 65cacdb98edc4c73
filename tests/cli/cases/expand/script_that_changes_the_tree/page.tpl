<%repeat%>
[%name|gone%] [%(GetParent().RemoveNode("item"))%] [%name|gone%]
<%/repeat%>
