#include "more parts/names.inc"
[[repeat filter="colour"]]
#{ "#" }define #prefix[%(upper(GetProp("name")))%] [%++%]
[[/repeat]]
