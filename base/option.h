#pragma once

#include "base/api.h"

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>
#include <wx/hashmap.h>
#include <wx/object.h>
#include <wx/string.h>

/// A map from texts to texts that keeps its entries in the order in which their keys first came. wxWidgets' hash maps
/// iterate in the order of their buckets, which differs from one build to the next; what is listed from options must
/// not.
class VC_QXPARSER_API CHashStringToString
{
public:
    using value_type = std::pair<wxString, wxString>;               ///< a key and its value
    using const_iterator = std::vector<value_type>::const_iterator; ///< goes from entry to entry, in their order

    ///@{
    /// The entries, in their order.
    const_iterator begin() const { return m_entries.begin(); }
    const_iterator end() const { return m_entries.end(); }
    ///@}

    size_t size() const { return m_entries.size(); } ///< The number of entries.
    bool empty() const { return m_entries.empty(); } ///< Whether there is none.

    /// The entry with this key; end() when there is none.
    const_iterator find(const wxString& key) const;

    /// The value at `key`, made empty at the end of the order if it was not there. Iterators end their validity here.
    wxString& operator[](const wxString& key);

private:
    using Places = std::unordered_map<wxString, size_t, wxStringHash, wxStringEqual>;

    void AddPlaces();

    std::vector<value_type> m_entries;
    /// The entries by their keys, once there are many. Most maps hold the few options of one tag, and there may be a
    /// great many of them.
    std::optional<Places> m_places;
};

/// A set of named options, as they stand in a tag. A value: a copy goes its own way.
///
/// The text of options: NAME, NAME=VALUE, NAME="VALUE" or NAME='VALUE', separated by blanks, tabs, line ends or commas;
/// blanks around the "=" are allowed. A name is everything up to a separator or "=". A quoted value ends at the next
/// same quote, without any escapes, or at the end of the text; an unquoted one at the next separator. A name without
/// "=" has the empty value. An "=" without a name before it is passed over with its value. Names are case-sensitive.
class VC_QXPARSER_API COption : public wxObject
{
    wxDECLARE_DYNAMIC_CLASS(COption);

public:
    COption();

    ///@{
    /// A copy is equal and goes its own way.
    COption(const COption& other);
    COption& operator=(const COption& other);
    ///@}

    ~COption() override;

    /// Adds the options of `text`. One whose name is there already gets the new value and keeps its place. No text is
    /// refused.
    void ExtractOption(const wxString& text);

    /// The value of the option `name`. False, with `value` as it was, when there is none.
    bool Get(const wxString& name, wxString& value) const;

    ///@{
    /// Walk over all options in the order in which their names first came: `it->first` is a name, `it->second` its
    /// value. First sets `it` on the first, Next moves it from one option to the next; both are false when there is
    /// none (more), and `it` is then no option. ExtractOption ends the validity of `it`.
    bool First(CHashStringToString::const_iterator& it) const;
    bool Next(CHashStringToString::const_iterator& it) const;
    ///@}

private:
    CHashStringToString m_options;
};
