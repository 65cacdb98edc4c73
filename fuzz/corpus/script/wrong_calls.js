var log = [];
[function () { host.Brighten(); }, function () { host.Brighten({ valueOf: function () { throw 1; } }); },
 function () { host.IsSame(5); }, function () { host.IsSame(new TextFile()); },
 function () { host.Brighten.call(new URLFile(), 1); }, function () { host.Brighten.call({}, 1); },
 function () { new Lamp(1, 2); }, function () { Lamp(3); }, function () { pause(1); },
 function () { host.next = null; }, function () { Lamp.prototype.level; },
 function () { Object.create(host).Brighten(1); }, function () { new Proxy(host, {}).Brighten(1); }
].forEach(function (f) { try { f(); } catch (e) { log.push(e && e.message); } });
log.join('\n');
