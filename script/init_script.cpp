#include "script/script_class.h"
#include "script/script_link.h"
#include "script/value_conversion.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace
{

/// A text as a script string literal. What could end the literal or the line is written as its code.
wxString Literal(const wxString& text)
{
    wxString literal = wxS("\"");
    for (const wxUniChar ch : text) {
        const unsigned long code = ch.GetValue();
        const bool isPlain =
            code >= 0x20 && code != '"' && code != '\\' && code != 0x7f && code != 0x2028 && code != 0x2029;
        if (isPlain)
            literal += ch;
        else
            literal += wxString::Format(wxS("\\u%04lX"), code);
    }
    return literal + wxS("\"");
}

template <typename Array, typename Write> wxString ArrayLiteral(const Array& array, Write write)
{
    wxString literal = wxS("[");
    for (size_t i = 0; i < array.size(); ++i)
        literal << (i ? wxS(",") : wxS("")) << write(array[i]);
    return literal + wxS("]");
}

wxString DoubleLiteral(double value)
{
    if (std::isnan(value))
        return wxS("NaN");
    if (std::isinf(value))
        return value < 0 ? wxS("-Infinity") : wxS("Infinity");
    // The shortest digits that bring the double back, in any locale.
    char digits[32];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
    return wxString::FromAscii(digits, end - digits);
}

template <typename Field> const Field& FieldOf(const CJScriptLink* link, const JSMapEntry& row)
{
    return *reinterpret_cast<const Field*>(reinterpret_cast<const char*>(link->GetRootObject()) + row.position);
}

/// The value of a field that script can write, as script text; empty for other rows.
wxString FieldLiteral(const CJScriptLink* link, const JSMapEntry& row)
{
    switch (row.kind) {
    case JSMapEntry::Integer:
        return wxString::Format(wxS("%d"), FieldOf<int>(link, row));
    case JSMapEntry::Double:
        return DoubleLiteral(FieldOf<double>(link, row));
    case JSMapEntry::Text:
        return Literal(FieldOf<wxString>(link, row));
    case JSMapEntry::Boolean:
        return FieldOf<bool>(link, row) ? wxS("true") : wxS("false");
    case JSMapEntry::IntegerArray:
        return ArrayLiteral(FieldOf<wxArrayInt>(link, row),
                            [](int value) { return wxString::Format(wxS("%d"), value); });
    case JSMapEntry::TextArray:
        return ArrayLiteral(FieldOf<wxArrayString>(link, row), [](const wxString& text) { return Literal(text); });
    default:
        return wxString();
    }
}

} // namespace

wxString CJScriptLinkClass::GetInitScript(const CJScriptLink* link) const
{
    wxString script = GetParent() ? GetParent()->GetInitScript(link) : wxString();
    for (const JSMapEntry* row = m_map->entries; row && row->name; ++row) {
        const wxString value = FieldLiteral(link, *row);
        if (!value.empty())
            script << wxS("this.") << wxString(row->name, wxConvUTF8) << wxS("=") << value << wxS(";\n");
    }
    return script;
}

bool CJScriptLinkClass::GetInitScript_Inplace(const CJScriptLink* link, wchar_t*& buffer, int& room) const
{
    const wxString script = GetInitScript(link);
    const auto needed = static_cast<int>(script.length()) + 1;
    if (needed > room)
        return false;
    std::copy_n(script.wx_str(), needed, buffer);
    buffer += needed;
    room -= needed;
    return true;
}
