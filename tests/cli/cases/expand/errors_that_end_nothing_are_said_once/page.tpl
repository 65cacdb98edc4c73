<%repeat%>
[%name%] [%(price * 2)%] [%++1%]
<%nix%>
<%/nix%>
<%/repeat%>
<%keep DEFINE="a = b"/%>
