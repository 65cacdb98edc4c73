var seen = 0;
host.OnEvent = function () { ++seen; if (seen < 5) this.Fire(); return seen != 2; };
function keep() { return seen; }
host.Keep(keep); host.Keep(keep); host.Drop(keep);
host.CallOnDestroy(function () { seen = this.level; throw new Error('late'); });
new FuzzObject().CallOnDestroy(function () { new FuzzObject(); });
host.Fire() + host.State();
