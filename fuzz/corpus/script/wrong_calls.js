var log = [];
[function () { host.Add(); }, function () { host.Add({ valueOf: function () { throw 1; } }); },
 function () { host.IsSame(5); }, function () { host.IsSame(new TextFile()); },
 function () { host.Add.call(new URLFile(), 1); }, function () { host.Add.call({}, 1); },
 function () { new FuzzObject(1, 2); }, function () { FuzzObject(3); }, function () { pause(1); },
 function () { host.next = null; }, function () { FuzzObject.prototype.level; },
 function () { Object.create(host).Add(1); }, function () { new Proxy(host, {}).Add(1); }
].forEach(function (f) { try { f(); } catch (e) { log.push(e && e.message); } });
log.join('\n');
