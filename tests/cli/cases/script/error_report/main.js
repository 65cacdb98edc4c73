var before = 1;

function fail() {
  throw new TypeError("it failed");
}
print("printed");
fail();
