#include "qxp/source_map.h"

#include "base/text_encoding.h"
#include "qxp/json_text.h"
#include "qxp/parser_options.h"
#include "qxp/uri.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace
{

namespace fs = std::filesystem;

constexpr int Version = 3;
constexpr const char* ColumnOfResult = "A";
constexpr const char* ColumnOfSource = "A";

/// Appends a number in base 64: 5 bits a digit, the lowest ones first, the lowest bit of all being the sign.
void AppendVlq(long long number, std::string& text)
{
    constexpr const char* digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr unsigned int digitBits = 5;
    constexpr unsigned int digitMask = 31;
    constexpr unsigned int moreFollow = 32;
    auto rest = static_cast<unsigned long long>(number < 0 ? -number : number) << 1 | (number < 0 ? 1 : 0);
    do {
        const auto digit = static_cast<unsigned int>(rest & digitMask);
        rest >>= digitBits;
        text += digits[rest ? digit | moreFollow : digit];
    } while (rest);
}

/// The folder of a file with all links followed, so that ".." means what it says.
fs::path RealFolder(const fs::path& file)
{
    std::error_code failed;
    const fs::path folder = fs::weakly_canonical(fs::absolute(file, failed).parent_path(), failed);
    return failed ? fs::absolute(file, failed).parent_path() : folder;
}

std::string RelativeTo(const fs::path& folder, const std::string& source)
{
    if (source == StandardInputName)
        return source;
    const fs::path path(source);
    return UriReferenceOf((RealFolder(path) / path.filename()).lexically_relative(folder).string());
}

} // namespace

long long SourceMap::IndexOf(const wxSharedPtr<CParserFile>& file)
{
    if (file == m_lastFile)
        return m_lastFileIndex;
    const std::string name = ToSystemName(NameFrom(m_searchDirectory, file->GetPath()));
    const auto [known, isNew] = m_indexes.emplace(name, static_cast<long long>(m_sources.size()));
    if (isNew)
        m_sources.push_back(name);
    m_lastFile = file;
    m_lastFileIndex = known->second;
    return m_lastFileIndex;
}

void SourceMap::AddLine(const CSourceLine& source)
{
    if (!std::exchange(m_isFirstLine, false))
        m_mappings += ';';
    if (!source.file)
        return;
    const long long index = IndexOf(source.file);
    const long long line = static_cast<long long>(source.line) - 1;
    m_mappings += ColumnOfResult;
    AppendVlq(index - m_lastSource, m_mappings);
    AppendVlq(line - m_lastLine, m_mappings);
    m_mappings += ColumnOfSource;
    m_lastSource = index;
    m_lastLine = line;
}

std::string SourceMap::Text(const std::string& result, const std::string& map) const
{
    const fs::path folder = RealFolder(map);
    Json sources = Json::array();
    for (const std::string& source : m_sources)
        sources.push_back(RelativeTo(folder, source));
    Json object = {{"version", Version}};
    if (!result.empty())
        object["file"] = ToJson(FromSystemName(fs::path(result).filename().string()));
    object["sources"] = std::move(sources);
    object["names"] = Json::array();
    object["mappings"] = m_mappings;
    return WriteJson(object, -1) + "\n";
}
