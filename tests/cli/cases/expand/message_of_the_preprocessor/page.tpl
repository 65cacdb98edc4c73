<%keep%>
#nix
<%/keep%>
