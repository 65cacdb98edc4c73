// "barrel" is the host's; a tank made here belongs to the script.
barrel.OnFull = function () { print(this.name, "is full"); };

var can = new Tank("can", 10);
can.OnFull = function () { print("the can too"); };
print("into the can:", can.Fill(12), "of", 12);
print("into the barrel:", barrel.FillFrom(can), "from", barrel.source.name);
print("left:", can.level, "- the log:", barrel.log.join());
print("at most", barrel.LARGEST, "litres");

try {
    barrel.Fill("much", "more");
} catch (error) {
    print(error.message);
}

function summary(tank) {
    return FormatString("%1: %2 of %3", tank.name, tank.level, tank.capacity);
}

function broken() {
    can = null;
    return barrel.FillFrom(7);
}
