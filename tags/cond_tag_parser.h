#pragma once

#include "base/api.h"
#include "tags/tag_parser.h"

#include <wx/dynarray.h>
#include <wx/string.h>

#include <memory>

class CJScript;
class CXmlNode;
class CXmlNodeRef;
struct CondExpression;
struct CondPlan;
struct CondText;

/// A template engine: a text with tags is expanded against an XML tree.
///
/// Parse() and ParseBlock() read the template; Process() expands it, as often as wanted. Each tag block writes its own
/// text, in which every "[%...%]" is replaced, and behind that what its nested blocks write: text that belongs between
/// two blocks stands in a "keep" block.
///
///     <%repeat node='items' filter='item'%>      once per child "item" of the child "items"
///     [%name%]: [%(GetProp('price') * 2)%]       an attribute, a script
///     <%if cond='[%stock%] > 0'%>
///     in stock
///     <%/if%>
///     <%else%>
///     sold out
///     <%/else%>
///     <%/repeat%>
///
/// docs/templates.md is the manual of the language.
///
/// Scripts run on the script object of the current node, so that its methods, and those of its document, can be called
/// directly. They may change the tree: a node that has been deleted meanwhile is the empty node from then on, which has
/// no name, no attributes and no siblings.
class VC_QXPARSER_API CCondTagParser : public CTagParser
{
public:
    /// A list of defines, the newest first, which goes on with those that its parent had when the list was made. The
    /// entries are shared by whoever lists them, so neither changing nor destroying the parent harms a list.
    class VC_QXPARSER_API CDefineList
    {
    public:
        /// @param parent not owned, may be null.
        explicit CDefineList(const CDefineList* parent);

        ///@{
        /// A copy lists the same entries.
        CDefineList(const CDefineList& other) = default;
        CDefineList& operator=(const CDefineList& other);
        ///@}

        ~CDefineList();

        /// Puts a new entry first, whether or not there is one of this name.
        void Add(const wxString& name, const wxString& value);
        /// Gives the list's own first entry of this name the value, or adds one.
        void AddOrReplace(const wxString& name, const wxString& value);
        /// The value of the first entry of this name, those that came from the parent included; `def` when there is
        /// none. `found` (may be null) receives whether there is one.
        wxString Get(const wxString& name, const wxString& def, bool* found) const;
        /// Removes the list's own first entry of this name, if any.
        void Remove(const wxString& name);

        /// The list it was made from, as given to the constructor; it may have gone.
        const CDefineList* GetParent() const { return m_parent; }

    private:
        struct Entry;
        using Link = std::shared_ptr<Entry>;

        Link* FindOwn(const wxString& name);
        void Release();

        Link m_head;
        Link m_inherited; ///< The first entry that is not this list's own.
        const CDefineList* m_parent;
    };

    /// The counters of the open repeats, the innermost last.
    using wxArrayCounters = wxArrayInt;

    /// A parser that makes its own preprocessor. A template should not go through it: see docs/templates.md.
    explicit CCondTagParser(const wchar_t* begin = L"<%", const wchar_t* end = L"%>");
    /// A parser that uses `pp` (not owned); see CParser.
    explicit CCondTagParser(CPreprocessor* pp, const wchar_t* begin = L"<%", const wchar_t* end = L"%>");

    ///@{
    /// Copies share the blocks (see CParser) and the global defines there are.
    CCondTagParser(const CCondTagParser& other) = default;
    CCondTagParser& operator=(const CCondTagParser& other) = default;
    ///@}

    /// Expands the blocks of this parser, one after the other, against `node`.
    /// @param node null is taken as an empty node.
    /// @param out what has been written, up to the failing block after a failure.
    /// @param script the context of the node's document, for conditions, counts and scripts; not owned. Null: see
    ///        ProvideScript.
    /// @return false when a block failed; the parser's error has the message, and no unit.
    bool Process(CXmlNode* node, wxString& out, CJScript* script);

    /// Leaves out the empty line that ends each block's own text.
    void SetCompact(bool compact) { m_compact = compact; }

    /// How many passes all repeats of one Process may make together; one more is a failure. 0, the default: no limit.
    void SetPassLimit(unsigned long passes) { m_passLimit = passes; }

    /// The block that is being expanded: inside Process, for those who listen to the log meanwhile, and after it the
    /// one that failed, as long as this parser keeps its blocks. Null otherwise.
    const CTagBlock* GetCurrentBlock() const { return m_current; }

    /// The defines made by "GLOBAL_DEFINE", which live as long as the parser.
    CDefineList& GetGlobalDefines() { return m_globalDefines; }

protected:
    /// Called at the first script of a Process that was given no context: a host that starts its engine only when a
    /// template needs it does so here, and gives the document its script objects (CXmlDocument::SetScript). Until then
    /// expressions that only read the current node are decided without: no script may have had a chance to put
    /// something in the place of its methods.
    /// @return the context, not owned; null when there is none: scripts and conditions fail then.
    virtual CJScript* ProvideScript() { return nullptr; }

private:
    struct Repetition;
    enum class Decision;

    bool RecurseProcess(const CXmlNodeRef& from, wxString& out, const CondPlan& plan, bool& taken,
                        wxArrayCounters& counters, const CDefineList& outer);
    bool UpdateNodeOption(const CondPlan& plan, CXmlNodeRef& node, const wxArrayCounters& counters,
                          CDefineList& defines, bool& skip);
    void UpdateContent(const CondText& text, const CXmlNodeRef& node, const wxArrayCounters& counters,
                       const CDefineList& defines, wxString& out);

    Decision Decide(const CondPlan& plan, const CXmlNodeRef& node, bool& taken, const wxArrayCounters& counters,
                    const CDefineList& defines, Repetition& repetition);
    Decision DecideCondition(const CondPlan& plan, const CXmlNodeRef& node, bool& taken,
                             const wxArrayCounters& counters, const CDefineList& defines);
    Decision DecideRepetition(const CondPlan& plan, const CXmlNodeRef& node, const wxArrayCounters& counters,
                              const CDefineList& defines, Repetition& repetition);
    bool Expand(const CondPlan& plan, CXmlNodeRef& node, wxString& out, wxArrayCounters& counters,
                const CDefineList& defines, Repetition& repetition);
    bool ExpandOnce(const CondPlan& plan, const CXmlNodeRef& node, wxString& out, wxArrayCounters& counters,
                    const CDefineList& defines);

    void RunDefine(const wxString& script, bool isGlobal, CDefineList& defines);
    wxString Substituted(const CondText& text, const CXmlNodeRef& node, const wxArrayCounters& counters,
                         const CDefineList& defines);
    void AppendValue(const CondExpression& expression, const CXmlNodeRef& node, const wxArrayCounters& counters,
                     const CDefineList& defines, wxString& out);
    void AppendDefine(const CondExpression& expression, const CDefineList& defines, wxString& out) const;
    void AppendScript(const CondExpression& expression, const CXmlNodeRef& node, wxString& out);
    CJScript* Script();
    template <typename Result> bool Evaluate(const wxString& text, const CXmlNodeRef& node, Result& result);
    Decision Fail(const wxString& message);
    bool CountPass(const CondPlan& plan);

    CJScript* m_script = nullptr;
    const CTagBlock* m_current = nullptr;
    CDefineList m_globalDefines{nullptr};
    bool m_compact = false;
    unsigned long m_passLimit = 0;
    unsigned long m_passes = 0; ///< Made by the repeats so far.

    wxDECLARE_CLASS(CCondTagParser);
};
