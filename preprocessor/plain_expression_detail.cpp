#include "preprocessor/plain_expression_detail.h"

#include "base/wide_number_detail.h"
#include "preprocessor/text_detail.h"
#include "script/value_conversion.h"

#include <algorithm>
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

/// The number that script makes of a text; nothing for texts other than plain decimal numbers.
std::optional<double> TextToNumber(const wxString& text)
{
    constexpr size_t longest = 64;
    char digits[longest];
    const size_t length = text.length();
    if (length == 0 || length > longest)
        return length == 0 ? std::optional<double>(0) : std::nullopt;
    const wchar_t* const chars = text.wx_str();
    for (size_t i = 0; i < length; ++i) {
        const bool isSign = i == 0 && length > 1 && chars[i] == L'-';
        const bool isPoint = chars[i] == L'.' && i + 1 < length && i > 0;
        if (!isSign && !isPoint && (chars[i] < L'0' || chars[i] > L'9'))
            return std::nullopt;
        digits[i] = static_cast<char>(chars[i]);
    }
    double number = 0;
    const auto [parsed, error] = std::from_chars(digits, digits + length, number);
    return error == std::errc() && parsed == digits + length ? std::optional<double>(number) : std::nullopt;
}

std::optional<double> ToNumber(const PlainValue& value)
{
    const auto* const text = std::get_if<wxString>(&value);
    return text ? TextToNumber(*text) : NumberOf(value);
}

/// Nothing where a text would have to become a number and is none.
std::optional<PlainValue> Apply(Operator op, const PlainValue& left, const PlainValue& right)
{
    if ((op == Operator::Same || op == Operator::NotSame) && left.index() != right.index())
        return op == Operator::NotSame;
    if (IsText(left) && IsText(right) && IsComparison(op))
        return Compare(op, std::get<wxString>(left).compare(std::get<wxString>(right)), 0);
    const std::optional<double> leftNumber = ToNumber(left);
    const std::optional<double> rightNumber = ToNumber(right);
    if (!leftNumber || !rightNumber)
        return std::nullopt;
    if (IsComparison(op))
        return Compare(op, *leftNumber, *rightNumber);
    return Calculate(op, *leftNumber, *rightNumber);
}

/// Appends a value to another one as texts; in its place, since a copy at each link would make chains quadratic.
bool Append(PlainValue& left, const PlainValue& right)
{
    wxString text;
    const auto* const rightText = std::get_if<wxString>(&right);
    if (!rightText && !ConvertPlain(right, text))
        return false;
    if (!IsText(left)) {
        wxString leftText;
        if (!ConvertPlain(left, leftText))
            return false;
        left = leftText;
    }
    std::get<wxString>(left) += rightText ? *rightText : text;
    return true;
}

/// Reads and evaluates in one go. Every function gives nothing for what is not plain.
class PlainExpression
{
public:
    PlainExpression(const wxString& text, const PlainFunctions* functions)
        : m_at(text.wx_str()), m_end(m_at + text.length()), m_functions(functions)
    {}

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
    const OperatorInfo* ReadOperator() const;
    std::optional<PlainValue> Binary(int precedence);
    std::optional<PlainValue> Unary();
    std::optional<PlainValue> Operand();
    std::optional<PlainValue> Parenthesised();
    std::optional<PlainValue> Text();
    std::optional<PlainValue> Number();
    std::optional<double> ShortNumber();
    std::optional<PlainValue> Call(std::wstring_view name);
    bool TakeProperty(PlainValue& value);

    const wchar_t* m_at;
    const wchar_t* m_end;
    const PlainFunctions* m_functions;
    const wchar_t* m_peekedAt = nullptr;
    const OperatorInfo* m_peeked = nullptr;
    int m_nesting = 0;
};

/// Asked at one place by every level of precedence around it.
const OperatorInfo* PlainExpression::PeekOperator()
{
    SkipBlanks();
    if (m_peekedAt != m_at) {
        m_peeked = ReadOperator();
        m_peekedAt = m_at;
    }
    return m_peeked;
}

const OperatorInfo* PlainExpression::ReadOperator() const
{
    for (const OperatorInfo& info : Operators) {
        if (m_at == m_end || *m_at != info.text[0] || !StartsWith(info.text))
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
        if (info->op == Operator::Plus && (IsText(*left) || IsText(*right))) {
            if (!Append(*left, *right))
                return std::nullopt;
        } else if (info->op == Operator::Or || info->op == Operator::And) {
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
    const std::optional<double> number = ToNumber(*operand);
    if (!number)
        return std::nullopt;
    return sign == L'-' ? -*number : *number;
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
    if (m_functions && !word.empty() && wordEnd != m_end && *wordEnd == L'(') {
        m_at = wordEnd + 1;
        return Call(word);
    }
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

/// A call, from behind its opening parenthesis on.
std::optional<PlainValue> PlainExpression::Call(std::wstring_view name)
{
    std::optional<PlainValue> argument;
    SkipBlanks();
    if (m_at != m_end && (*m_at == L'"' || *m_at == L'\'')) {
        argument = Text();
        if (!argument)
            return std::nullopt;
        SkipBlanks();
    }
    if (m_at == m_end || *m_at != L')')
        return std::nullopt;
    ++m_at;
    std::optional<PlainValue> value = m_functions->Call(name, argument ? &std::get<wxString>(*argument) : nullptr);
    const bool isKnown = value && (m_at == m_end || *m_at != L'.' || TakeProperty(*value));
    return isKnown ? value : std::nullopt;
}

/// Takes one of the properties of texts that are known; of texts in ASCII, whose letters have simple counterparts.
bool PlainExpression::TakeProperty(PlainValue& value)
{
    const auto isAscii = [](wchar_t ch) { return ch < 0x80; };
    auto* const text = std::get_if<wxString>(&value);
    if (!text || !std::all_of(text->wc_str(), text->wc_str() + text->length(), isAscii))
        return false;
    const auto take = [this](std::wstring_view word) {
        const bool isHere = StartsWith(word);
        m_at += isHere ? word.size() : 0;
        return isHere;
    };
    if (take(L".toUpperCase()"))
        text->MakeUpper();
    else if (take(L".toLowerCase()"))
        text->MakeLower();
    else if (take(L".length") && (m_at == m_end || !(IsWordChar(*m_at) || *m_at >= 0x80 || *m_at == L'$')))
        value = static_cast<double>(text->length());
    else
        return false;
    return true;
}

/// A whole number of few digits, which nearly all are; what might be anything else is left where it is.
std::optional<double> PlainExpression::ShortNumber()
{
    constexpr int mostDigits = 15;
    const wchar_t* at = m_at;
    long long number = 0;
    for (; at != m_end && *at >= L'0' && *at <= L'9' && at - m_at <= mostDigits; ++at)
        number = number * 10 + (*at - L'0');
    const bool isOctal = at - m_at > 1 && *m_at == L'0';
    const bool goesOn = at != m_end && (IsWordChar(*at) || *at >= 0x80 || *at == L'.' || *at == L'$' || *at == L'\\');
    if (isOctal || goesOn || at - m_at > mostDigits)
        return std::nullopt;
    m_at = at;
    return static_cast<double>(number);
}

/// A decimal number without an exponent: what else begins with a digit is the engine's.
std::optional<PlainValue> PlainExpression::Number()
{
    if (const std::optional<double> number = ShortNumber())
        return *number;
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

std::optional<PlainValue> EvaluatePlain(const wxString& text, const PlainFunctions* functions)
{
    return PlainExpression(text, functions).Evaluate();
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
        result.clear();
        vcq::detail::AppendNumber(result, static_cast<long long>(*number));
    } else if (const bool* const truth = std::get_if<bool>(&value))
        result = *truth ? wxS("true") : wxS("false");
    else
        result = std::get<wxString>(value);
    return true;
}
