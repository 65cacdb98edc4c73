// Starts wxWidgets first, then loads a plug-in that brings the script library along, and has it run a script.
#include <wx/dynlib.h>
#include <wx/init.h>
#include <wx/log.h>

#include <cstdio>
#include <cstring>
#include <wx/dynload.h>

using RunScript = bool (*)(const char* text, char* result, std::size_t size);

int main(int argc, char** argv)
{
    const wxInitializer wx;
    if (argc != 4)
        return std::puts("usage: host_plugin plain|managed PLUGIN SCRIPT"), 2;
    const wxString path(argv[2], wxConvUTF8);

    // wxWidgets knows two ways. The second one also starts the wxModules of what it loads.
    wxDynamicLibrary plain;
    wxDynamicLibrary* library = &plain;
    if (std::strcmp(argv[1], "plain") == 0)
        plain.Load(path, wxDL_NOW | wxDL_VERBATIM);
    else
        library = wxPluginManager::LoadLibrary(path, wxDL_NOW | wxDL_VERBATIM);
    if (!library || !library->IsLoaded())
        return 1;

    const auto run = reinterpret_cast<RunScript>(library->GetSymbol(wxS("RunScript")));
    char result[256];
    const bool done = run && run(argv[3], result, sizeof result);
    std::printf("%s\n", done ? result : "failed");
    // Before wxWidgets ends, or it would end the plug-in's modules a second time.
    if (library != &plain)
        wxPluginManager::UnloadLibrary(path);
    return done ? 0 : 1;
}
