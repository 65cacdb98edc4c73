#pragma once

#include <wx/string.h>

#include <optional>
#include <string_view>
#include <variant>

/// The value of a plain expression.
using PlainValue = std::variant<bool, double, wxString>;

/// Functions whose results are known without the engine. They must neither fail nor change anything, and script must
/// have had no chance to put others in their places.
class PlainFunctions
{
public:
    /// The result of the call `name()`, or with a text `name('argument')`; nothing when it is not known.
    /// @param argument null when there is none.
    virtual std::optional<PlainValue> Call(std::wstring_view name, const wxString* argument) const = 0;

protected:
    ~PlainFunctions() = default;
};

/// Decides script expressions made of nothing but decimal numbers, `true`, `false`, strings without escapes,
/// comparison, logic, arithmetic and parentheses, without starting the engine, which costs a thousand times more.
///
/// The result is exactly what the engine would give. Nothing for every other text, valid or not, and where texts that
/// are no decimal numbers would have to become numbers: those are the engine's.
/// @param functions what may be called as well; `.toUpperCase()`, `.toLowerCase()` and `.length` of the texts that they
///        give are then known, too. Null for none.
std::optional<PlainValue> EvaluatePlain(const wxString& text, const PlainFunctions* functions = nullptr);

/// The results that a script context gives for such a value (see CJScript::Evaluate). False, with `result` untouched,
/// when only the engine knows for certain.
bool ConvertPlain(const PlainValue& value, bool& result);
bool ConvertPlain(const PlainValue& value, int& result);
bool ConvertPlain(const PlainValue& value, wxString& result);
