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

} // namespace

void Dependencies::Add(const wxString& file)
{
    const std::string name = ToSystemName(file);
    if (m_known.insert(name).second)
        m_files.push_back(name);
}

std::string Dependencies::MakeRule(const wxString& target) const
{
    std::string rule = EscapeForMake(ToSystemName(target)) + ":";
    for (const std::string& file : m_files)
        rule += " " + EscapeForMake(file);
    return rule + "\n";
}
