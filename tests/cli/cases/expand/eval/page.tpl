<%repeat filter="item"%>
[%(twice(GetProp("name").length))%] [%(unit)%] [%(Global.unit)%]
<%/repeat%>
