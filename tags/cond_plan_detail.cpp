#include "tags/cond_plan_detail.h"

#include "tags/tag_block.h"

#include <algorithm>

namespace
{

struct TypeName
{
    const wxChar* name;
    CondPlan::Type type;
};

constexpr TypeName TypeNames[] = {
    {wxS("repeat"), CondPlan::Type::Repeat}, {wxS("if"), CondPlan::Type::If},
    {wxS("elseif"), CondPlan::Type::ElseIf}, {wxS("else"), CondPlan::Type::Else},
    {wxS("keep"), CondPlan::Type::Keep},     {wxS(""), CondPlan::Type::Keep},
};

struct DefineName
{
    const wxChar* name;
    CondPlan::DefineOption::Kind kind;
};

constexpr DefineName DefineNames[] = {
    {wxS("DEFINE"), CondPlan::DefineOption::Kind::Define},
    {wxS("GLOBAL_DEFINE"), CondPlan::DefineOption::Kind::GlobalDefine},
    {wxS("GLOBAL_UNDEF"), CondPlan::DefineOption::Kind::GlobalUndef},
};

CondPlan::Type TypeOf(const wxString& name)
{
    const auto* const found = std::find_if(std::begin(TypeNames), std::end(TypeNames),
                                           [&](const TypeName& row) { return name.CmpNoCase(row.name) == 0; });
    return found == std::end(TypeNames) ? CondPlan::Type::Unknown : found->type;
}

/// Whether a count is just written down, so that it cannot fail.
bool IsPlainCount(const CondText& count)
{
    int number = 0;
    return count.pieces.empty() && count.rest.ToInt(&number, 10);
}

} // namespace

CondPlan::CondPlan(const CTagBlock& from) : block(&from), type(TypeOf(from.GetType()))
{
    ReadOptions();
    wxString text;
    from.GetBuffer(text, false);
    content = CutCondText(text);
    blocks.reserve(from.GetSubBlockCount());
    for (size_t i = 0; i < from.GetSubBlockCount(); ++i)
        blocks.emplace_back(*from.GetSubBlock(i));
    isIdle = content.empty() &&
             std::all_of(blocks.begin(), blocks.end(), [](const CondPlan& plan) { return plan.DoesNothing(); });
}

void CondPlan::ReadOptions()
{
    const wxString conditionName = type == Type::Repeat ? wxS("count") : wxS("cond");
    CHashStringToString::const_iterator option;
    for (bool more = block->GetOption().First(option); more; more = block->GetOption().Next(option)) {
        const wxString& name = option->first;
        for (const DefineName& row : DefineNames) {
            if (name == row.name)
                defines.push_back({row.kind, CutCondText(option->second)});
        }
        if (name == wxS("node"))
            node = CutCondText(option->second);
        else if (name == conditionName)
            condition = CutCondText(option->second);
        else if (name == wxS("filter"))
            filter = CutCondText(option->second);
    }
}

/// Whether neither output nor anything else that can be seen comes of the block.
bool CondPlan::DoesNothing() const
{
    const bool isPlainType =
        type == Type::Keep || type == Type::Else || (type == Type::Repeat && (!condition || IsPlainCount(*condition)));
    return isIdle && isPlainType && defines.empty() && !node && filter.pieces.empty();
}
