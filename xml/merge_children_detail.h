#pragma once

#include "xml/merge_index_detail.h"

#include <memory>

namespace xml_detail
{

/// How far children are walked before something is made that answers at once: it takes many walks over few children,
/// and most merges never use it again.
constexpr std::size_t WalkingPatience = 1000;

/// The children of a node of the tree that a merge changes. Everything is done through it, so that it knows what it has
/// seen; searching, inserting and removing cost no walk over the children each time.
class MergeChildren
{
public:
    explicit MergeChildren(wxXmlNode& parent, std::size_t patience = WalkingPatience)
        : m_parent(parent), m_patience(patience)
    {}

    /// The first child of this name in any case; null without one.
    wxXmlNode* FindByName(const wxString& name);
    /// The first child that fits; null without one.
    wxXmlNode* Find(const ChildQuery& query);
    /// The counterpart of `src` under another name, which may be its own.
    ///
    /// Attributes up to "Merge" select, one after the other: the search goes on to the first child that has the first
    /// attribute, from that one on to the first that has the second, and never back. So the child found need have the
    /// last of them only, and a child before it that has them all may have been passed by.
    wxXmlNode* FindCounterpart(const wxString& name, const wxXmlNode& src);

    void Append(wxXmlNode& child) { LinkBehind(child, Last()); }
    /// Inserts in front of or right behind `at`; in front of the last child or at the end, when `at` is no child.
    void InsertAt(wxXmlNode& child, wxXmlNode& at, bool after);
    /// Unlinks a child.
    void Remove(wxXmlNode& child);

private:
    wxXmlNode* FirstFrom(wxXmlNode* from, const ChildQuery& query);
    wxXmlNode* Last();
    wxXmlNode* Previous(const wxXmlNode& child);
    void LinkBehind(wxXmlNode& child, wxXmlNode* previous);
    bool HasIndex();

    wxXmlNode& m_parent;
    const std::size_t m_patience;
    wxXmlNode* m_last = nullptr; ///< Null while it is unknown.
    std::size_t m_walked = 0;
    std::unique_ptr<ChildIndex> m_index;
};

} // namespace xml_detail
