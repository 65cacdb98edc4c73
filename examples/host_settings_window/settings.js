// What of a window is kept, and how: the hooks of the configuration. "frame", "split", "wrap" and "numbers" are the
// host's windows; the names under which they are stored are their own.
frame.StoreXmlConfig = function (section) {
    return section.AddProp("left", this.Left()) && section.AddProp("top", this.Top()) &&
        section.AddProp("width", this.Width()) && section.AddProp("height", this.Height());
};
frame.LoadXmlConfig = function (section) {
    const number = name => Number(section.GetProp(name));
    this.Place(number("left"), number("top"), number("width"), number("height"));
};
frame._DefaultXmlConfig = function () { this.Place(50, 40, 400, 300); };

split.StoreXmlConfig = function (section) { return section.AddProp("sash", this.Sash()); };
split.LoadXmlConfig = function (section) { this.MoveSash(Number(section.GetProp("sash"))); };
split._DefaultXmlConfig = function () { this.MoveSash(100); };

for (const box of [wrap, numbers]) {
    box.StoreXmlConfig = function (section) { return section.AddProp("on", this.IsOn()); };
    box.LoadXmlConfig = function (section) { this.Turn(section.GetProp("on") == "true"); };
}

// The name of a window is the name of its section; here, all but the frame are in the section "view".
Config.Register(frame);
for (const part of [split, wrap, numbers])
    Config.RegisterSection(part, "view");
