#pragma once

#include "xml/merge_children_detail.h"

#include <unordered_map>
#include <vector>

namespace xml_detail
{

/// The nodes of the tree that a merge changes.
class MergeTarget
{
public:
    explicit MergeTarget(std::size_t patience) : m_patience(patience) {}

    /// The children of a node, all that is known of them included.
    MergeChildren& ChildrenOf(wxXmlNode& node) { return m_children.try_emplace(&node, node, m_patience).first->second; }

    /// Calls `visit` with each node whose children may have changed.
    template <typename Visit> void ForEach(Visit visit) const
    {
        for (const auto& entry : m_children)
            visit(entry.first);
    }

private:
    std::size_t m_patience;
    std::unordered_map<wxXmlNode*, MergeChildren> m_children;
};

/// The merge of an overlay in the merge vocabulary. It works on trees alone: the handles on them are the documents'
/// business.
class OverlayMerge
{
public:
    explicit OverlayMerge(std::size_t patience = WalkingPatience) : m_target(patience) {}

    /// Merges the children of `overlay` into `base`, which belongs to another tree.
    /// @param anchor where to insert; null: at the end.
    void Run(wxXmlNode& base, wxXmlNode& overlay, wxXmlNode* anchor, bool after);

    const MergeTarget& GetTarget() const { return m_target; }
    /// The nodes of the overlay that some children may have left.
    const std::vector<wxXmlNode*>& GetSources() const { return m_sources; }
    /// The nodes that went over into the base.
    const std::vector<wxXmlNode*>& GetMoved() const { return m_moved; }
    /// Hands out the nodes taken out of the base, which are nobody's now.
    std::vector<wxXmlNode*> TakeRemoved();

private:
    /// Where what follows is inserted.
    struct Position
    {
        wxXmlNode* anchor; ///< Null: at the end.
        bool after;
    };

    /// An element of the overlay whose children are being merged into one of the base.
    struct Level
    {
        MergeChildren& base;
        wxXmlNode& overlay;
        wxXmlNode* next; ///< The child whose turn it is.
        wxXmlNode* kept; ///< The last child that stays in the overlay.
        Position position;
    };

    void Enter(wxXmlNode& base, wxXmlNode& overlay, const Position& position);
    void MergeNext();
    void Move(Level& level, wxXmlNode& child);
    void MoveToPlaceHolder(Level& level, wxXmlNode& child, const wxString& name, bool isMatch, bool after);
    void Match(Level& level, wxXmlNode& child, bool after);
    void Remove(Level& level, wxXmlNode& child);
    void Unlink(Level& level, wxXmlNode& child);

    MergeTarget m_target;
    std::vector<Level> m_levels;
    std::vector<wxXmlNode*> m_sources;
    std::vector<wxXmlNode*> m_moved;
    std::vector<wxXmlNode*> m_removed;
};

/// The merge that copies.
class CopyMerge
{
public:
    explicit CopyMerge(bool keepExisting, std::size_t patience = WalkingPatience)
        : m_keepExisting(keepExisting), m_target(patience)
    {}

    /// Merges what is below `src` into `dest`. They are the same node, or neither is below the other.
    void Run(wxXmlNode& dest, const wxXmlNode& src);
    /// How deep, counted from 1 below `dest`, the elements would reach that Run would add; 0 when there are none. The
    /// trees stay as they are.
    static unsigned int DepthOfAdded(wxXmlNode& dest, const wxXmlNode& src);

    const MergeTarget& GetTarget() const { return m_target; }

private:
    struct Level
    {
        MergeChildren& dest;
        const wxXmlNode* next; ///< The child of the source whose turn it is.
    };

    void MergeNext();
    wxXmlNode* Add(const wxString& name);
    void TakeAddedOut();

    bool m_keepExisting;
    bool m_isTrial = false; ///< Only names count then.
    MergeTarget m_target;
    std::vector<Level> m_levels;
    std::vector<wxXmlNode*> m_added;
    std::size_t m_depthOfAdded = 0;
};

} // namespace xml_detail
