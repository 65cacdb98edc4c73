#pragma once

#include "tags/cond_text_detail.h"

#include <optional>
#include <vector>

class CTagBlock;

/// A tag block as a template: everything about it that is the same at each expansion.
struct CondPlan
{
    enum class Type
    {
        Repeat,
        If,
        ElseIf,
        Else,
        Keep,
        Unknown
    };

    /// "DEFINE" and its kin.
    struct DefineOption
    {
        enum class Kind
        {
            Define,
            GlobalDefine,
            GlobalUndef
        };

        Kind kind;
        CondText text;
    };

    explicit CondPlan(const CTagBlock& from);

    const CTagBlock* block;
    Type type;
    std::vector<DefineOption> defines; ///< In the order of the options.
    std::optional<CondText> node;
    std::optional<CondText> condition; ///< "count" of a "repeat", "cond" of others.
    CondText filter;
    CondText content; ///< The block's own text.
    std::vector<CondPlan> blocks;
    bool isIdle; ///< Expanding its content, however often, does nothing at all.

private:
    void ReadOptions();
    bool DoesNothing() const;
};
