// "TYPE NAME, TYPE NAME" of a method's parameters.
function parameters(method)
{
    var list = [];
    for (var child = method.GetFirst(); child.Ok(); child = child.GetNext())
        if (child.GetName() == "param")
            list.push(child.GetProp("type") + " " + child.GetProp("name"));
    return list.join(", ");
}
