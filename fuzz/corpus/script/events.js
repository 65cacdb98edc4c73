var seen = 0;
host.OnSwitch = function () { ++seen; if (seen < 5) this.Switch(); return seen != 2; };
function keep() { return seen; }
host.Keep(keep); host.Keep(keep); host.Drop(keep);
host.CallOnDestroy(function () { seen = this.level; throw new Error('late'); });
new Lamp().CallOnDestroy(function () { new Lamp(); });
host.Switch() + host.State();
