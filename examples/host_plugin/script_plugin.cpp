// The plug-in: evaluates a script and hands out its result as UTF-8.
#include <vc_qxparser.h>

#include <cstdio>

extern "C" __attribute__((visibility("default"))) bool RunScript(const char* text, char* result, std::size_t size)
{
    qxjsMinimal global;
    CJScript script(nullptr);
    wxString value;
    if (!script.SetGlobal(global.GetJSLink(), wxS("Global")) || !script.Evaluate(FromSystemName(text), nullptr, value))
        return false;
    std::snprintf(result, size, "%s", ToUtf8(value).c_str());
    return true;
}
