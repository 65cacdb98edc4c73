#include "tags/cond_tag_parser.h"

#include <utility>

struct CCondTagParser::CDefineList::Entry
{
    wxString name;
    wxString value;
    Link next;
};

CCondTagParser::CDefineList::CDefineList(const CDefineList* parent)
    : m_head(parent ? parent->m_head : nullptr), m_inherited(m_head), m_parent(parent)
{}

CCondTagParser::CDefineList& CCondTagParser::CDefineList::operator=(const CDefineList& other)
{
    // The copy keeps what is shared alive while this list lets go of it.
    CDefineList copy(other);
    Release();
    m_head = copy.m_head;
    m_inherited = copy.m_inherited;
    m_parent = copy.m_parent;
    return *this;
}

CCondTagParser::CDefineList::~CDefineList()
{
    Release();
}

/// Lets go of the entries one by one: letting go of the first alone would release the rest recursively.
void CCondTagParser::CDefineList::Release()
{
    m_inherited.reset();
    while (m_head && m_head.use_count() == 1)
        m_head = std::exchange(m_head->next, nullptr);
    m_head.reset();
}

void CCondTagParser::CDefineList::Add(const wxString& name, const wxString& value)
{
    m_head = std::make_shared<Entry>(Entry{name, value, m_head});
}

void CCondTagParser::CDefineList::AddOrReplace(const wxString& name, const wxString& value)
{
    if (Link* const own = FindOwn(name))
        (*own)->value = value;
    else
        Add(name, value);
}

wxString CCondTagParser::CDefineList::Get(const wxString& name, const wxString& def, bool* found) const
{
    const Entry* entry = m_head.get();
    while (entry && entry->name != name)
        entry = entry->next.get();
    if (found)
        *found = entry != nullptr;
    return entry ? entry->value : def;
}

void CCondTagParser::CDefineList::Remove(const wxString& name)
{
    if (Link* const own = FindOwn(name))
        *own = Link((*own)->next);
}

/// The link to the list's own first entry of this name; null when there is none.
CCondTagParser::CDefineList::Link* CCondTagParser::CDefineList::FindOwn(const wxString& name)
{
    for (Link* link = &m_head; *link != m_inherited; link = &(*link)->next) {
        if ((*link)->name == name)
            return link;
    }
    return nullptr;
}
