#include "qxp/dependencies.h"

#include "base/text_encoding.h"

namespace
{

std::string EscapeForMake(const std::string& name)
{
    std::string escaped;
    for (const char ch : name) {
        if (ch == ' ' || ch == '#' || ch == ':')
            escaped += '\\';
        else if (ch == '$')
            escaped += '$';
        escaped += ch;
    }
    return escaped;
}

std::string DefaultTarget(const std::string& file)
{
    const size_t dot = file.rfind('.');
    const size_t slash = file.rfind('/');
    const size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    const bool hasExtension = dot != std::string::npos && dot > nameStart;
    return file.substr(0, hasExtension ? dot : std::string::npos) + ".out";
}

} // namespace

void Dependencies::Add(const wxString& file)
{
    const std::string name = ToSystemName(file);
    if (m_known.insert(name).second)
        m_files.push_back(name);
}

std::string Dependencies::MakeRule(const std::string& output, const std::string& input) const
{
    std::string rule = EscapeForMake(output.empty() ? DefaultTarget(input == "-" ? "stdin" : input) : output) + ":";
    for (const std::string& file : m_files)
        rule += " " + EscapeForMake(file);
    return rule + "\n";
}
