#include "xml/merge_detail.h"

#include "base/case_folding_detail.h"

#include <algorithm>
#include <functional>

using vcq::detail::IsSameNoCase;

namespace xml_detail
{

namespace
{

const wxString MergeAttribute = wxS("Merge");
const wxString PlaceHolderAttribute = wxS("PlaceHolder");
const wxString PlaceHolderElement = wxS("PlaceHolder");
const wxString PlaceHolderNameAttribute = wxS("Name");

enum class Mode
{
    Add,
    Match,
    Remove
};

/// What a value of "Merge" says.
struct Instruction
{
    const wchar_t* value;
    Mode mode;
    bool after; ///< The direction of an element in match mode.
};

constexpr Instruction Instructions[] = {
    {L"Force", Mode::Match, true},      {L"Add", Mode::Add, true},        {L"No", Mode::Add, true},
    {L"Pos", Mode::Match, true},        {L"PosAfter", Mode::Match, true}, {L"Stop", Mode::Match, true},
    {L"PosBefore", Mode::Match, false}, {L"Remove", Mode::Remove, true},
};
constexpr Instruction Otherwise = {L"", Mode::Add, true};

const Instruction& InstructionFor(const wxString& value)
{
    if (!value.empty()) {
        for (const Instruction& instruction : Instructions) {
            if (IsSameNoCase(value, instruction.value))
                return instruction;
        }
    }
    return Otherwise;
}

} // namespace

void OverlayMerge::Run(wxXmlNode& base, wxXmlNode& overlay, wxXmlNode* anchor, bool after)
{
    Enter(base, overlay, {anchor, after});
    while (!m_levels.empty()) {
        if (m_levels.back().next)
            MergeNext();
        else
            m_levels.pop_back();
    }
}

std::vector<wxXmlNode*> OverlayMerge::TakeRemoved()
{
    // In this order memory is given back in one go through it, not here and there.
    std::sort(m_removed.begin(), m_removed.end(), std::less<>());
    return std::move(m_removed);
}

void OverlayMerge::Enter(wxXmlNode& base, wxXmlNode& overlay, const Position& position)
{
    m_levels.push_back({m_target.ChildrenOf(base), overlay, overlay.GetChildren(), nullptr, position});
    m_sources.push_back(&overlay);
}

void OverlayMerge::MergeNext()
{
    Level& level = m_levels.back();
    wxXmlNode& child = *level.next;
    level.next = child.GetNext();
    const Instruction& instruction = InstructionFor(child.GetAttribute(MergeAttribute));
    const wxString placeHolder = child.GetAttribute(PlaceHolderAttribute);
    if (instruction.mode == Mode::Remove)
        Remove(level, child);
    else if (!placeHolder.empty())
        MoveToPlaceHolder(level, child, placeHolder, instruction.mode == Mode::Match, instruction.after);
    else if (instruction.mode == Mode::Match)
        Match(level, child, instruction.after);
    else
        Move(level, child);
}

void OverlayMerge::Move(Level& level, wxXmlNode& child)
{
    Unlink(level, child);
    if (level.position.anchor)
        level.base.InsertAt(child, *level.position.anchor, level.position.after);
    else
        level.base.Append(child);
}

/// Moves a child next to a placeholder: one in match mode in its own direction, `after`.
void OverlayMerge::MoveToPlaceHolder(Level& level, wxXmlNode& child, const wxString& name, bool isMatch, bool after)
{
    const wxXmlAttribute wanted(PlaceHolderNameAttribute, name);
    wxXmlNode* const placeHolder = level.base.Find({PlaceHolderElement, &wanted});
    Unlink(level, child);
    child.DeleteAttribute(MergeAttribute);
    child.DeleteAttribute(PlaceHolderAttribute);
    if (!placeHolder)
        return level.base.Append(child);
    level.base.InsertAt(child, *placeHolder, isMatch ? after : level.position.after);
    if (isMatch)
        level.position.anchor = placeHolder;
}

void OverlayMerge::Match(Level& level, wxXmlNode& child, bool after)
{
    wxXmlNode* const counterpart = level.base.FindCounterpart(child.GetName(), child);
    if (!counterpart && child.GetChildren())
        return Move(level, child);
    level.kept = &child;
    if (!counterpart)
        return;
    const Position inherited = level.position;
    level.position = {counterpart, after};
    // The anchor that goes down is no child of the counterpart, so it means near the end there.
    if (child.GetChildren())
        Enter(*counterpart, child, inherited);
}

void OverlayMerge::Remove(Level& level, wxXmlNode& child)
{
    level.kept = &child;
    wxXmlNode* const counterpart = level.base.FindCounterpart(child.GetName(), child);
    // An anchor that is removed stays the anchor: it is no child any more, as one of an outer level.
    if (counterpart) {
        level.base.Remove(*counterpart);
        m_removed.push_back(counterpart);
    }
}

/// Takes a child out of the overlay.
void OverlayMerge::Unlink(Level& level, wxXmlNode& child)
{
    if (level.kept)
        level.kept->SetNext(level.next);
    else
        level.overlay.SetChildren(level.next);
    m_moved.push_back(&child);
}

} // namespace xml_detail
