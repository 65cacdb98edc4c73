#include "preprocessor/plain_expression_detail.h"

#include "preprocessor/text_detail.h"
#include "script/value_conversion.h"

#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

namespace
{

using text_detail::IsWordChar;

constexpr int DeepestNesting = 64;
constexpr double LargestExactInteger = 1e15;

bool IsTrue(const PlainValue& value)
{
    if (const bool* const truth = std::get_if<bool>(&value))
        return *truth;
    if (const double* const number = std::get_if<double>(&value))
        return *number != 0 && !std::isnan(*number);
    return !std::get<wxString>(value).empty();
}

bool IsText(const PlainValue& value)
{
    return std::holds_alternative<wxString>(value);
}

/// The number of a number or truth value.
double NumberOf(const PlainValue& value)
{
    if (const bool* const truth = std::get_if<bool>(&value))
        return *truth ? 1 : 0;
    return std::get<double>(value);
}

/// Characters whose order and identity are the same in UTF-16 and here, and that end no line.
bool IsPlainChar(wchar_t ch)
{
    return (ch >= L' ' || ch == L'\t') && ch < 0xD800;
}

enum class Operator
{
    None,
    Or,
    And,
    Equal,
    NotEqual,
    Same,
    NotSame,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Plus,
    Minus,
    Times,
    Divide,
    Remainder
};

struct OperatorInfo
{
    std::wstring_view text;
    Operator op;
    int precedence;
};

/// Longer operators stand before those they begin with.
constexpr OperatorInfo Operators[] = {
    {L"===", Operator::Same, 3},    {L"!==", Operator::NotSame, 3},    {L"==", Operator::Equal, 3},
    {L"!=", Operator::NotEqual, 3}, {L"<=", Operator::LessOrEqual, 4}, {L">=", Operator::GreaterOrEqual, 4},
    {L"&&", Operator::And, 2},      {L"||", Operator::Or, 1},          {L"<", Operator::Less, 4},
    {L">", Operator::Greater, 4},   {L"+", Operator::Plus, 5},         {L"-", Operator::Minus, 5},
    {L"*", Operator::Times, 6},     {L"/", Operator::Divide, 6},       {L"%", Operator::Remainder, 6},
};

template <typename Value> bool Compare(Operator op, const Value& left, const Value& right)
{
    switch (op) {
    case Operator::Equal:
    case Operator::Same:
        return left == right;
    case Operator::NotEqual:
    case Operator::NotSame:
        return left != right;
    case Operator::Less:
        return left < right;
    case Operator::LessOrEqual:
        return left <= right;
    case Operator::Greater:
        return left > right;
    default:
        return left >= right;
    }
}

double Calculate(Operator op, double left, double right)
{
    switch (op) {
    case Operator::Plus:
        return left + right;
    case Operator::Minus:
        return left - right;
    case Operator::Times:
        return left * right;
    case Operator::Divide:
        return left / right;
    default:
        return std::fmod(left, right);
    }
}

bool IsComparison(Operator op)
{
    return op >= Operator::Equal && op <= Operator::GreaterOrEqual;
}

/// Nothing where script would convert between texts and numbers. Texts are not joined here.
std::optional<PlainValue> Apply(Operator op, const PlainValue& left, const PlainValue& right)
{
    if ((op == Operator::Same || op == Operator::NotSame) && left.index() != right.index())
        return op == Operator::NotSame;
    if (IsText(left) != IsText(right))
        return std::nullopt;
    if (IsText(left)) {
        const auto& leftText = std::get<wxString>(left);
        const auto& rightText = std::get<wxString>(right);
        if (IsComparison(op))
            return Compare(op, leftText.compare(rightText), 0);
        return std::nullopt;
    }
    if (IsComparison(op))
        return Compare(op, NumberOf(left), NumberOf(right));
    return Calculate(op, NumberOf(left), NumberOf(right));
}

/// Reads and evaluates in one go. Every function gives nothing for what is not plain.
class PlainExpression
{
public:
    explicit PlainExpression(const wxString& text) : m_at(text.wx_str()), m_end(m_at + text.length()) {}

    std::optional<PlainValue> Evaluate()
    {
        std::optional<PlainValue> value = Binary(1);
        SkipBlanks();
        return m_at == m_end ? value : std::nullopt;
    }

private:
    void SkipBlanks() { m_at = text_detail::SkipBlanks(m_at, m_end); }
    std::wstring_view Rest() const { return std::wstring_view(m_at, m_end - m_at); }
    bool StartsWith(std::wstring_view text) const { return Rest().substr(0, text.size()) == text; }

    const OperatorInfo* PeekOperator();
    std::optional<PlainValue> Binary(int precedence);
    std::optional<PlainValue> Unary();
    std::optional<PlainValue> Operand();
    std::optional<PlainValue> Parenthesised();
    std::optional<PlainValue> Text();
    std::optional<PlainValue> Number();

    const wchar_t* m_at;
    const wchar_t* m_end;
    int m_nesting = 0;
};

const OperatorInfo* PlainExpression::PeekOperator()
{
    SkipBlanks();
    for (const OperatorInfo& info : Operators) {
        if (!StartsWith(info.text))
            continue;
        // Increments, shifts, powers and comments begin like operators.
        const std::wstring_view rest = Rest().substr(info.text.size(), 1);
        const bool isLonger = !rest.empty() && std::wstring_view(L"+-*/<>=&|").find(rest[0]) != std::wstring_view::npos;
        const bool isSign = !rest.empty() && (rest[0] == L'+' || rest[0] == L'-') && rest[0] != info.text.back();
        return isLonger && !isSign ? nullptr : &info;
    }
    return nullptr;
}

std::optional<PlainValue> PlainExpression::Binary(int precedence)
{
    std::optional<PlainValue> left = Unary();
    while (left) {
        const OperatorInfo* const info = PeekOperator();
        if (!info || info->precedence < precedence)
            return left;
        m_at += info->text.size();
        // Both sides are read in any case: what follows must be plain too.
        const std::optional<PlainValue> right = Binary(info->precedence + 1);
        if (!right)
            return std::nullopt;
        if (info->op == Operator::Plus && IsText(*left) && IsText(*right))
            std::get<wxString>(*left) += std::get<wxString>(*right);
        else if (info->op == Operator::Or || info->op == Operator::And) {
            if (IsTrue(*left) != (info->op == Operator::Or))
                left = right;
        } else
            left = Apply(info->op, *left, *right);
    }
    return left;
}

std::optional<PlainValue> PlainExpression::Unary()
{
    SkipBlanks();
    if (m_at == m_end || (*m_at != L'!' && *m_at != L'-' && *m_at != L'+'))
        return Operand();
    const wchar_t sign = *m_at++;
    if (m_at != m_end && *m_at == sign && sign != L'!')
        return std::nullopt;
    if (++m_nesting > DeepestNesting)
        return std::nullopt;
    const std::optional<PlainValue> operand = Unary();
    --m_nesting;
    if (!operand)
        return std::nullopt;
    if (sign == L'!')
        return !IsTrue(*operand);
    if (IsText(*operand))
        return std::nullopt;
    return sign == L'-' ? -NumberOf(*operand) : NumberOf(*operand);
}

std::optional<PlainValue> PlainExpression::Operand()
{
    if (m_at == m_end)
        return std::nullopt;
    if (*m_at == L'(')
        return Parenthesised();
    if (*m_at == L'"' || *m_at == L'\'')
        return Text();
    if (*m_at >= L'0' && *m_at <= L'9')
        return Number();
    const wchar_t* const wordEnd = text_detail::SkipWord(m_at, m_end);
    const std::wstring_view word(m_at, wordEnd - m_at);
    // Other letters, and "$", may go on with the word.
    if ((word != L"true" && word != L"false") || (wordEnd != m_end && (*wordEnd >= 0x80 || *wordEnd == L'$')))
        return std::nullopt;
    m_at = wordEnd;
    return word == L"true";
}

std::optional<PlainValue> PlainExpression::Parenthesised()
{
    if (++m_nesting > DeepestNesting)
        return std::nullopt;
    ++m_at;
    std::optional<PlainValue> value = Binary(1);
    SkipBlanks();
    if (m_at == m_end || *m_at != L')')
        return std::nullopt;
    ++m_at;
    --m_nesting;
    return value;
}

std::optional<PlainValue> PlainExpression::Text()
{
    const wchar_t quote = *m_at++;
    const wchar_t* const start = m_at;
    for (; m_at != m_end && *m_at != quote; ++m_at) {
        if (*m_at == L'\\' || !IsPlainChar(*m_at))
            return std::nullopt;
    }
    if (m_at == m_end)
        return std::nullopt;
    return wxString(start, m_at++ - start);
}

/// A decimal number without an exponent: what else begins with a digit is the engine's.
std::optional<PlainValue> PlainExpression::Number()
{
    const wchar_t* const start = m_at;
    std::string digits;
    for (; m_at != m_end && ((*m_at >= L'0' && *m_at <= L'9') || *m_at == L'.'); ++m_at)
        digits += static_cast<char>(*m_at);
    const bool isOctal = m_at - start > 1 && start[0] == L'0' && start[1] != L'.';
    const bool goesOn = m_at != m_end && (IsWordChar(*m_at) || *m_at >= 0x80 || *m_at == L'$' || *m_at == L'\\');
    double number = 0;
    const auto [parsed, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (isOctal || goesOn || error != std::errc() || parsed != digits.data() + digits.size())
        return std::nullopt;
    return number;
}

} // namespace

std::optional<PlainValue> EvaluatePlain(const wxString& text)
{
    return PlainExpression(text).Evaluate();
}

bool ConvertPlain(const PlainValue& value, bool& result)
{
    result = IsTrue(value);
    return true;
}

bool ConvertPlain(const PlainValue& value, int& result)
{
    const double* const number = std::get_if<double>(&value);
    if (!number)
        return false;
    result = TruncateToInt(*number);
    return true;
}

bool ConvertPlain(const PlainValue& value, wxString& result)
{
    if (const double* const number = std::get_if<double>(&value)) {
        if (!(std::abs(*number) < LargestExactInteger) || *number != std::trunc(*number))
            return false;
        result = std::to_wstring(static_cast<long long>(*number));
    } else if (const bool* const truth = std::get_if<bool>(&value))
        result = *truth ? wxS("true") : wxS("false");
    else
        result = std::get<wxString>(value);
    return true;
}
