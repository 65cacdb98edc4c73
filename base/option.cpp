#include "base/option.h"

#include <algorithm>

wxIMPLEMENT_DYNAMIC_CLASS(COption, wxObject);

namespace
{

/// Up to so many are searched one by one.
constexpr size_t FewEntries = 8;

bool IsBlank(wchar_t c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsSeparator(wchar_t c)
{
    return IsBlank(c) || c == ',';
}

/// Reads the pieces of an option text from its beginning to its end.
class OptionReader
{
public:
    explicit OptionReader(const wxString& text) : m_at(text.wx_str()), m_end(m_at + text.length()) {}

    /// The next option; false at the end.
    bool Next(wxString& name, wxString& value)
    {
        m_at = std::find_if_not(m_at, m_end, IsSeparator);
        if (m_at == m_end)
            return false;
        name = TakeUntil([](wchar_t c) { return c == '=' || IsSeparator(c); });
        value.clear();
        if (SkipEquals())
            value = TakeValue();
        return true;
    }

private:
    template <typename Stop> wxString TakeUntil(Stop stop)
    {
        const wchar_t* const begin = m_at;
        m_at = std::find_if(m_at, m_end, stop);
        return wxString(begin, static_cast<size_t>(m_at - begin));
    }

    /// Moves behind an "=" and the blanks around it; stays when there is none.
    bool SkipEquals()
    {
        const wchar_t* const equals = std::find_if_not(m_at, m_end, IsBlank);
        if (equals == m_end || *equals != '=')
            return false;
        m_at = std::find_if_not(equals + 1, m_end, IsBlank);
        return true;
    }

    wxString TakeValue()
    {
        if (m_at == m_end || (*m_at != '"' && *m_at != '\''))
            return TakeUntil(IsSeparator);
        const wchar_t quote = *m_at++;
        wxString value = TakeUntil([quote](wchar_t c) { return c == quote; });
        if (m_at != m_end)
            ++m_at;
        return value;
    }

    const wchar_t* m_at;
    const wchar_t* m_end;
};

} // namespace

CHashStringToString::const_iterator CHashStringToString::find(const wxString& key) const
{
    if (!m_places)
        return std::find_if(begin(), end(), [&](const value_type& entry) { return entry.first == key; });
    const auto place = m_places->find(key);
    return place == m_places->end() ? end() : begin() + static_cast<std::ptrdiff_t>(place->second);
}

wxString& CHashStringToString::operator[](const wxString& key)
{
    const auto found = find(key);
    if (found != end())
        return m_entries[static_cast<size_t>(found - begin())].second;
    m_entries.emplace_back(key, wxString());
    AddPlaces();
    return m_entries.back().second;
}

void CHashStringToString::AddPlaces()
{
    const size_t added = m_entries.size() - 1;
    if (m_places)
        m_places->emplace(m_entries[added].first, added);
    else if (added >= FewEntries) {
        m_places.emplace();
        for (size_t place = 0; place <= added; ++place)
            m_places->emplace(m_entries[place].first, place);
    }
}

COption::COption() = default;
COption::COption(const COption& other) = default;
COption& COption::operator=(const COption& other) = default;
COption::~COption() = default;

void COption::ExtractOption(const wxString& text)
{
    OptionReader reader(text);
    wxString name;
    wxString value;
    while (reader.Next(name, value)) {
        if (!name.empty())
            m_options[name] = value;
    }
}

bool COption::Get(const wxString& name, wxString& value) const
{
    const auto found = m_options.find(name);
    if (found == m_options.end())
        return false;
    value = found->second;
    return true;
}

bool COption::First(CHashStringToString::const_iterator& it) const
{
    it = m_options.begin();
    return it != m_options.end();
}

bool COption::Next(CHashStringToString::const_iterator& it) const
{
    if (it != m_options.end())
        ++it;
    return it != m_options.end();
}
