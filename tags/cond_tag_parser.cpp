#include "tags/cond_tag_parser.h"

#include "script/script.h"
#include "script/script_link.h"
#include "tags/cond_define_script_detail.h"
#include "tags/cond_node_functions_detail.h"
#include "tags/cond_node_path_detail.h"
#include "tags/cond_plan_detail.h"
#include "xml/tree_links_detail.h"
#include "xml/xml_document.h"
#include "xml/xml_node_ref.h"

#include <wx/log.h>
#include <wx/xml/xml.h>

#include <limits>
#include <optional>

wxIMPLEMENT_CLASS(CCondTagParser, CTagParser);

/// How often a block's content is expanded, and against what.
struct CCondTagParser::Repetition
{
    int count = 1;
    bool isOverChildren = false;
    wxString filter; ///< The name of the children that take part; empty: all.
};

enum class CCondTagParser::Decision
{
    Failed,
    Skipped,
    Taken
};

namespace
{

constexpr const wxChar* TraceMask = wxS("TavoliJscriptTrace");

bool HasName(const wxXmlNode* node, const wxString& name)
{
    return node && node->GetName() == name;
}

void MoveToNext(CXmlNodeRef& node)
{
    if (const wxXmlNode* const current = node.GetXmlNode())
        node.Set(xml_detail::NextOf(*current));
}

void AppendCounter(const CondExpression& expression, const CCondTagParser::wxArrayCounters& counters, wxString& out)
{
    const int innermost = static_cast<int>(counters.GetCount()) - 1;
    if (expression.level < 0 || expression.level > innermost)
        wxLogError(wxS("Xml parse : bad ++ counter level: request %d has %d"), expression.level, innermost);
    else
        out << counters[static_cast<size_t>(innermost - expression.level)];
}

wxString HierarchyOf(const CondPlan& plan)
{
    return plan.block->GetHierarchy(0);
}

} // namespace

CCondTagParser::CCondTagParser(const wchar_t* begin, const wchar_t* end) : CTagParser(begin, end) {}

CCondTagParser::CCondTagParser(CPreprocessor* pp, const wchar_t* begin, const wchar_t* end) : CTagParser(pp, begin, end)
{}

bool CCondTagParser::Process(CXmlNode* node, wxString& out, CJScript* script)
{
    m_script = script;
    m_passes = 0;
    out.clear();
    ClearError();
    const CXmlNodeRef start(node ? node->GetDocument() : nullptr, node ? node->GetXmlNode() : nullptr);
    const CDefineList defines(nullptr);
    bool taken = true;
    for (size_t i = 0; i < m_blocks.GetCount(); ++i) {
        const auto* const block = dynamic_cast<const CTagBlock*>(m_blocks[i]);
        wxArrayCounters counters;
        if (block && !RecurseProcess(start, out, CondPlan(*block), taken, counters, defines))
            return false;
    }
    m_current = nullptr;
    return true;
}

/// Expands one block. It is called once per level of nested blocks, which the parser limits.
bool CCondTagParser::RecurseProcess(const CXmlNodeRef& from, wxString& out, const CondPlan& plan, bool& taken,
                                    wxArrayCounters& counters, const CDefineList& outer)
{
    m_current = plan.block;
    CDefineList defines(&outer);
    CXmlNodeRef node(from);
    bool skip = false;
    if (!UpdateNodeOption(plan, node, counters, defines, skip))
        return false;
    Repetition repetition;
    const Decision decision = skip ? Decision::Skipped : Decide(plan, node, taken, counters, defines, repetition);
    if (decision != Decision::Taken)
        return decision == Decision::Skipped;
    return plan.isIdle || Expand(plan, node, out, counters, defines, repetition);
}

CCondTagParser::Decision CCondTagParser::Fail(const wxString& message)
{
    SetError(message, nullptr);
    return Decision::Failed;
}

bool CCondTagParser::UpdateNodeOption(const CondPlan& plan, CXmlNodeRef& node, const wxArrayCounters& counters,
                                      CDefineList& defines, bool& skip)
{
    using Kind = CondPlan::DefineOption::Kind;
    skip = false;
    for (const CondPlan::DefineOption& option : plan.defines) {
        const wxString value = Substituted(option.text, node, counters, defines);
        if (option.kind == Kind::GlobalUndef)
            m_globalDefines.Remove(value);
        else
            RunDefine(value, option.kind == Kind::GlobalDefine, defines);
    }
    if (!plan.node)
        return true;
    const wxString path = Substituted(*plan.node, node, counters, defines);
    skip = !FollowNodePath(path, node);
    if (skip)
        wxLogTrace(TraceMask, wxS(" *** Skipping node %s"), path);
    return true;
}

void CCondTagParser::RunDefine(const wxString& script, bool isGlobal, CDefineList& defines)
{
    NamedTexts made;
    if (!RunDefineScript(script, Script(), made)) {
        wxLogError(wxS("** Add define '%s' FAILED parse JS"), script);
        return;
    }
    for (const auto& [name, value] : made) {
        if (isGlobal)
            m_globalDefines.AddOrReplace(name, value);
        else
            defines.Add(name, value);
    }
}

CCondTagParser::Decision CCondTagParser::Decide(const CondPlan& plan, const CXmlNodeRef& node, bool& taken,
                                                const wxArrayCounters& counters, const CDefineList& defines,
                                                Repetition& repetition)
{
    switch (plan.type) {
    case CondPlan::Type::Keep:
        return Decision::Taken;
    case CondPlan::Type::Repeat:
        taken = false;
        return DecideRepetition(plan, node, counters, defines, repetition);
    case CondPlan::Type::If:
        return DecideCondition(plan, node, taken, counters, defines);
    case CondPlan::Type::ElseIf:
        return taken ? Decision::Skipped : DecideCondition(plan, node, taken, counters, defines);
    case CondPlan::Type::Else:
        taken = !taken;
        return taken ? Decision::Taken : Decision::Skipped;
    case CondPlan::Type::Unknown:
        break;
    }
    wxLogError(wxS("Xml parse : unknown tag (%s) in \n%s"), plan.block->GetType(), HierarchyOf(plan));
    return Decision::Skipped;
}

CCondTagParser::Decision CCondTagParser::DecideRepetition(const CondPlan& plan, const CXmlNodeRef& node,
                                                          const wxArrayCounters& counters, const CDefineList& defines,
                                                          Repetition& repetition)
{
    if (!plan.condition) {
        repetition.isOverChildren = true;
        repetition.filter = Substituted(plan.filter, node, counters, defines);
        repetition.count = ChildCount(node.GetXmlNode());
        return Decision::Taken;
    }
    const wxString expression = Substituted(*plan.condition, node, counters, defines);
    wxString result;
    long count = 0;
    if (!Evaluate(expression, node, result))
        return Fail(wxString::Format(wxS("Xml parse : can not evaluate %s in \n%s"), expression, HierarchyOf(plan)));
    if (!result.ToLong(&count, 10) || count > std::numeric_limits<int>::max())
        return Fail(
            wxString::Format(wxS("Xml parse : bad count %s (%s) in \n%s"), expression, result, HierarchyOf(plan)));
    repetition.count = count < 0 ? 0 : static_cast<int>(count);
    return Decision::Taken;
}

CCondTagParser::Decision CCondTagParser::DecideCondition(const CondPlan& plan, const CXmlNodeRef& node, bool& taken,
                                                         const wxArrayCounters& counters, const CDefineList& defines)
{
    if (!plan.condition) {
        const wxString tag = plan.type == CondPlan::Type::If ? wxS("if") : wxS("elseif");
        return Fail(wxString::Format(wxS("Xml parse : %s missing cond[ition] in \n%s"), tag, HierarchyOf(plan)));
    }
    const wxString expression = Substituted(*plan.condition, node, counters, defines);
    if (!Evaluate(expression, node, taken))
        return Fail(wxString::Format(wxS("Xml parse : bad condition %s in \n%s"), expression, HierarchyOf(plan)));
    return taken ? Decision::Taken : Decision::Skipped;
}

bool CCondTagParser::Expand(const CondPlan& plan, CXmlNodeRef& node, wxString& out, wxArrayCounters& counters,
                            const CDefineList& defines, Repetition& repetition)
{
    const bool isRepeat = plan.type == CondPlan::Type::Repeat;
    if (repetition.isOverChildren && node.GetXmlNode())
        node.Set(node.GetXmlNode()->GetChildren());
    if (isRepeat)
        counters.Add(0);
    bool done = true;
    for (int index = 0; done && index < repetition.count;) {
        if (repetition.filter.empty() || HasName(node.GetXmlNode(), repetition.filter)) {
            if (isRepeat)
                counters.Last() = index;
            done = (!isRepeat || CountPass(plan)) && ExpandOnce(plan, node, out, counters, defines);
            ++index;
        } else
            --repetition.count;
        if (repetition.isOverChildren)
            MoveToNext(node);
    }
    if (isRepeat)
        counters.RemoveAt(counters.GetCount() - 1);
    return done;
}

bool CCondTagParser::CountPass(const CondPlan& plan)
{
    if (m_passLimit == 0 || ++m_passes <= m_passLimit)
        return true;
    Fail(wxString::Format(wxS("Xml parse : more than %lu passes in \n%s"), m_passLimit, HierarchyOf(plan)));
    return false;
}

bool CCondTagParser::ExpandOnce(const CondPlan& plan, const CXmlNodeRef& node, wxString& out, wxArrayCounters& counters,
                                const CDefineList& defines)
{
    if (!plan.content.empty()) {
        if (!plan.blocks.empty())
            wxLogVerbose(wxS("Caution : both content & object in \n%s"), HierarchyOf(plan));
        UpdateContent(plan.content, node, counters, defines, out);
        if (!m_compact)
            out += wxS('\n');
    }
    bool taken = true;
    for (const CondPlan& block : plan.blocks) {
        if (!RecurseProcess(node, out, block, taken, counters, defines))
            return false;
    }
    m_current = plan.block;
    return true;
}

void CCondTagParser::UpdateContent(const CondText& text, const CXmlNodeRef& node, const wxArrayCounters& counters,
                                   const CDefineList& defines, wxString& out)
{
    for (const CondText::Piece& piece : text.pieces) {
        out += piece.before;
        out += piece.expression.quote;
        if (piece.expression.isUpper) {
            wxString value;
            AppendValue(piece.expression, node, counters, defines, value);
            out += CJScriptLink::StrToUpper(value);
        } else
            AppendValue(piece.expression, node, counters, defines, out);
        out += piece.expression.quote;
    }
    out += text.rest;
}

wxString CCondTagParser::Substituted(const CondText& text, const CXmlNodeRef& node, const wxArrayCounters& counters,
                                     const CDefineList& defines)
{
    wxString result;
    UpdateContent(text, node, counters, defines, result);
    return result;
}

void CCondTagParser::AppendValue(const CondExpression& expression, const CXmlNodeRef& node,
                                 const wxArrayCounters& counters, const CDefineList& defines, wxString& out)
{
    switch (expression.kind) {
    case CondExpression::Kind::Constant:
        out += expression.fallback;
        return;
    case CondExpression::Kind::Script:
        AppendScript(expression, node, out);
        return;
    case CondExpression::Kind::Define:
        AppendDefine(expression, defines, out);
        return;
    case CondExpression::Kind::Counter:
        AppendCounter(expression, counters, out);
        return;
    case CondExpression::Kind::BadCounter:
        wxLogError(wxS("Xml parse : bad ++ counter level %s"), expression.text);
        return;
    case CondExpression::Kind::Attributes:
        const wxXmlAttribute* const attribute = FindAttribute(node.GetXmlNode(), expression.names);
        out += attribute ? attribute->GetValue() : expression.fallback;
        return;
    }
}

void CCondTagParser::AppendDefine(const CondExpression& expression, const CDefineList& defines, wxString& out) const
{
    bool isFound = false;
    wxString value = defines.Get(expression.text, expression.fallback, &isFound);
    if (!isFound)
        value = m_globalDefines.Get(expression.text, expression.fallback, nullptr);
    out += value;
}

void CCondTagParser::AppendScript(const CondExpression& expression, const CXmlNodeRef& node, wxString& out)
{
    wxString value;
    if (Evaluate(expression.text, node, value))
        out += value;
    else
        wxLogError(wxS("Xml parse : bad script %s"), expression.text);
}

CJScript* CCondTagParser::Script()
{
    if (!m_script)
        m_script = ProvideScript();
    return m_script;
}

/// Evaluates a text on the script object of a node. What it does to the tree is known afterwards: the reference is
/// empty when it has deleted the node.
template <typename Result> bool CCondTagParser::Evaluate(const wxString& text, const CXmlNodeRef& node, Result& result)
{
    // Once a script has run, the methods may be others.
    const NodeFunctions functions(node.GetXmlNode());
    const std::optional<PlainValue> plain = EvaluatePlain(text, m_script ? nullptr : &functions);
    if (plain && ConvertPlain(*plain, result))
        return true;
    CJScript* const script = Script();
    if (!script)
        return false;
    CXmlNode* const handle = node.GetHandle();
    return script->Evaluate(text, handle ? handle->GetJSLink() : nullptr, result);
}
