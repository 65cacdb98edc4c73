// Starts with the settings that a product ships, applies overlays of the site and the user to them, fills in what is
// still missing, and writes the result.
//
//   host_overlay SETTINGS DEFAULTS OVERLAY...
#include <vc_qxparser.h>

#include <wx/ffile.h>
#include <wx/init.h>
#include <wx/log.h>
#include <wx/wfstream.h>
#include <wx/xml/xml.h>

#include <cstdio>

namespace
{

bool Load(CXmlDocument& document, const char* name)
{
    CFile file = CDir().OpenFile(FromSystemName(name), wxFile::read);
    if (!file.IsOpened())
        return std::fprintf(stderr, "%s: not found\n", name), false;
    const wxLogNull quiet; // the reason is known without the log
    if (document.Load(*file.GetInputStream(), wxS("UTF-8"), wxXMLDOC_NONE))
        return true;
    const CXmlDocument::LoadError& error = document.GetLoadError();
    return std::fprintf(stderr, "%s:%ld: %s\n", name, error.line, ToUtf8(error.message).c_str()), false;
}

/// An overlay that is not fit is left out; what it is merged into is as before then.
void Apply(CXmlDocument& settings, const char* name)
{
    CXmlDocument overlay;
    if (Load(overlay, name) && !settings.MergeWith(&overlay))
        std::fprintf(stderr, "%s: not an overlay for <%s>\n", name, ToUtf8(settings.GetRawRoot()->GetName()).c_str());
}

} // namespace

int main(int argc, char** argv)
{
    const wxInitializer wx;
    CXmlDocument settings;
    CXmlDocument defaults;
    if (argc < 3 || !Load(settings, argv[1]) || !Load(defaults, argv[2]))
        return 2;
    for (int i = 3; i < argc; ++i)
        Apply(settings, argv[i]);
    settings.MergeXML(&defaults, true);

    CXmlNode* const window = settings.GetRawRoot()->GetRawNode(wxS("window"));
    std::fprintf(stderr, "the window is %ld wide\n", window->GetPropLong(wxS("width"), 0));

    wxFFile standardOutput(stdout);
    wxFFileOutputStream out(standardOutput);
    const bool isSaved = settings.Save(out);
    standardOutput.Detach();
    return isSaved ? 0 : 1;
}
