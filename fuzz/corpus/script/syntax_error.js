function f() { throw new RangeError("deep"); }
f(