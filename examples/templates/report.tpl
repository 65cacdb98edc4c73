<!DOCTYPE html>
<html lang="en">
<%keep%>
<head>
<meta charset="utf-8">
<title>[%(html(GetProp('title')))%]</title>
</head>
<body>
<h1>[%(html(GetProp('title')))%]</h1>
<p>As of [%date%]: [%(GetCountOf('group'))%] groups.</p>
<table>
<tr><th>No.</th><th>Group</th><th>Items</th></tr>
<%/keep%>
<%repeat filter="group"%>
<tr>
<td>[%++%]</td><td>[%(html(GetProp('name')))%]</td>
<td>
<%if cond="GetCountOf('item') == 0"%>
<em>nothing</em>
<%/if%>
<%else%>
<table>
<%repeat filter="item"%>
<tr><td>[%++1%].[%++%]</td><td>[%(html(GetProp('name')))%]</td><td>[%(money(GetProp('price')))%]</td>
<%if cond="[%stock%] > 0"%>
<td>[%stock%] in stock</td>
<%/if%>
<%else%>
<td class="out">sold out</td>
<%/else%>
<%keep%>
</tr>
<%/keep%>
<%/repeat%>
<%keep%>
</table>
<%/keep%>
<%/else%>
<%keep%>
</td>
</tr>
<%/keep%>
<%/repeat%>
<%keep%>
</table>
</body>
</html>
<%/keep%>
