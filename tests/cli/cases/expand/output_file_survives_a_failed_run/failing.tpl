<%keep%>
some text
<%/keep%>
<%if cond="nix"/%>
