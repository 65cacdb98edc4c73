(function () { for (var i = 0; i < 2000; ++i) { var o = new Lamp(i); o.self = o; o.CallOnDestroy(function () { i; }); } })();
Global.host = null; delete Global.host; Object.keys(Global).length;
