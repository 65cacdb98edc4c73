#include "tags/cond_text_detail.h"

#include "preprocessor/plain_expression_detail.h"

#include <limits>
#include <optional>

namespace
{

const wxString Opening = wxS("[%");
const wxString Closing = wxS("%]");
const wxString CounterMark = wxS("++");
constexpr wchar_t Separator = L'|';

bool IsEnclosed(const wxString& text, wchar_t first, wchar_t last)
{
    return text.length() >= 2 && text[0] == first && text.Last() == last;
}

/// Takes the quotes off an expression that stands in quotes, "U" before them aside.
void TakeQuotes(wxString& text, CondExpression& expression)
{
    const bool isUpper = text.StartsWith(wxS("U\"")) || text.StartsWith(wxS("U'"));
    const size_t open = isUpper ? 1 : 0;
    if (text.length() <= open)
        return;
    const wxUniChar quote = text[open];
    if ((quote != '"' && quote != '\'') || text.Last() != quote)
        return;
    expression.isUpper = isUpper;
    expression.quote = quote;
    const size_t last = text.find_last_not_of(quote);
    text = last == wxString::npos || last <= open ? wxString() : text.substr(open + 1, last - open);
}

/// A script made of literals has the same value every time.
void ReadScript(const wxString& script, CondExpression& expression)
{
    const std::optional<PlainValue> value = EvaluatePlain(script);
    const bool isConstant = value && ConvertPlain(*value, expression.fallback);
    expression.kind = isConstant ? CondExpression::Kind::Constant : CondExpression::Kind::Script;
    expression.text = script;
}

void ReadDefine(const wxString& text, CondExpression& expression)
{
    expression.kind = CondExpression::Kind::Define;
    expression.text = text.BeforeFirst(Separator, &expression.fallback);
}

void ReadCounter(const wxString& text, CondExpression& expression)
{
    long level = 0;
    const bool isNumber = text.empty() || text.ToLong(&level, 10);
    const bool fits = level >= std::numeric_limits<int>::min() && level <= std::numeric_limits<int>::max();
    expression.kind = isNumber && fits ? CondExpression::Kind::Counter : CondExpression::Kind::BadCounter;
    expression.text = text;
    expression.level = static_cast<int>(level);
}

void ReadAttributes(const wxString& text, CondExpression& expression)
{
    expression.kind = CondExpression::Kind::Attributes;
    size_t start = 0;
    for (size_t end = text.find(Separator); end != wxString::npos; end = text.find(Separator, start)) {
        expression.names.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    const wxString last = text.substr(start);
    if (expression.names.empty())
        expression.names.push_back(last);
    else
        expression.fallback = last;
}

CondExpression ReadExpression(wxString text)
{
    CondExpression expression;
    TakeQuotes(text, expression);
    wxString rest;
    if (IsEnclosed(text, L'(', L')'))
        ReadScript(text.substr(1, text.length() - 2), expression);
    else if (text.StartsWith(wxS("#"), &rest))
        ReadDefine(rest, expression);
    else if (text.StartsWith(CounterMark, &rest))
        ReadCounter(rest, expression);
    else
        ReadAttributes(text, expression);
    return expression;
}

} // namespace

CondText CutCondText(const wxString& text)
{
    CondText cut;
    size_t start = 0;
    for (size_t open = text.find(Opening); open != wxString::npos; open = text.find(Opening, start)) {
        const size_t inside = open + Opening.length();
        const size_t close = text.find(Closing, inside);
        if (close == wxString::npos)
            break;
        cut.pieces.push_back({text.substr(start, open - start), ReadExpression(text.substr(inside, close - inside))});
        start = close + Closing.length();
    }
    cut.rest = text.substr(start);
    return cut;
}
