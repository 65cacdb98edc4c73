#pragma once

#include <wx/string.h>

#include <nlohmann/json.hpp>

#include <string>

/// JSON whose keys keep the order in which they were given.
using Json = nlohmann::ordered_json;

/// A text as a JSON value. It may hold names of files: bytes of a name that are not UTF-8 become U+FFFD in the end.
Json ToJson(const wxString& text);

/// The text of a value: valid UTF-8 whatever it was made of, control characters escaped.
/// @param indent blanks for each level, each value on its own line; a negative number: all on one line.
std::string WriteJson(const Json& value, int indent);
