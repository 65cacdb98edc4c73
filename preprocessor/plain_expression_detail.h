#pragma once

#include <wx/string.h>

#include <optional>
#include <variant>

/// The value of a plain expression.
using PlainValue = std::variant<bool, double, wxString>;

/// Decides script expressions made of nothing but decimal numbers, `true`, `false`, strings without escapes,
/// comparison, logic, arithmetic and parentheses, without starting the engine, which costs a thousand times more.
///
/// The result is exactly what the engine would give. Nothing for every other text, valid or not, and wherever the
/// operators would have to convert between texts and numbers: those are the engine's.
std::optional<PlainValue> EvaluatePlain(const wxString& text);

/// The results that a script context gives for such a value (see CJScript::Evaluate). False, with `result` untouched,
/// when only the engine knows for certain.
bool ConvertPlain(const PlainValue& value, bool& result);
bool ConvertPlain(const PlainValue& value, int& result);
bool ConvertPlain(const PlainValue& value, wxString& result);
