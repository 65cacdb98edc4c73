#pragma once

#include <wx/string.h>

#include <vector>

/// An expression between "[%" and "%]".
struct CondExpression
{
    enum class Kind
    {
        Constant,   ///< `fallback` is the value.
        Script,     ///< `text` is a script.
        Define,     ///< `text` is the name of a define.
        Counter,    ///< The counter `level` levels out.
        BadCounter, ///< `text` should have been a level.
        Attributes  ///< The first of the attributes `names` that there is.
    };

    Kind kind = Kind::Attributes;
    wxString text;
    std::vector<wxString> names;
    wxString fallback; ///< The value where there is none.
    int level = 0;
    wxString quote; ///< What stands on both sides of the value.
    bool isUpper = false;
};

/// A text of a template, cut once into what is kept and what is replaced each time.
struct CondText
{
    struct Piece
    {
        wxString before; ///< What is kept in front of the expression.
        CondExpression expression;
    };

    std::vector<Piece> pieces;
    wxString rest; ///< What is kept behind the last one.

    bool empty() const { return pieces.empty() && rest.empty(); }
};

/// Cuts a text. Where a "[%" is never closed, it and what follows is kept.
CondText CutCondText(const wxString& text);
