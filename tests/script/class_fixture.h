#pragma once

#include "script/native_function.h"
#include "tests/script/script_fixture.h"

#include <memory>
#include <utility>
#include <vector>

/// A class table made at run time, with its descriptor. Must outlive the objects of the class.
struct Table
{
    Table(const char* name, CJScriptLinkClass* parent, std::vector<JSMapEntry> tableRows)
        : rows(WithEnd(std::move(tableRows))), map{name, parent, rows.data()}, cls(&map)
    {}

    static std::vector<JSMapEntry> WithEnd(std::vector<JSMapEntry> rows)
    {
        rows.emplace_back();
        return rows;
    }

    std::vector<JSMapEntry> rows;
    JSMap map;
    CJScriptLinkClass cls;
};

/// A scriptable object with a field of every kind, whose class is chosen at run time.
class Part : public wxObject
{
public:
    explicit Part(CJScriptLinkClass& cls) { m_link.Link(this, &cls); }

    CJScriptLink* GetJSLink() { return &m_link; }

    int m_number = 3;
    double m_double = 1.5;
    wxString m_text = wxS("text");
    bool m_flag = false;
    wxArrayInt m_numbers;
    wxArrayString m_texts;
    wxObject* m_pointer = nullptr;
    wxObject* m_raw = nullptr;
    qxjsMinimal m_embedded;
    wxObject m_plain;
    CJScriptLink m_link;
};

template <typename Field> std::size_t PositionIn(Field Part::*member)
{
    return script_detail::PositionOf<Part, Field>(member);
}

/// The place of an object's link, from the object's start.
template <typename Class> std::size_t LinkPositionIn(Class& object)
{
    return static_cast<std::size_t>(reinterpret_cast<char*>(object.GetJSLink()) - reinterpret_cast<char*>(&object));
}

/// Rows for so many integer properties: all read `m_number`.
inline std::vector<JSMapEntry> NumberRows(int count)
{
    static std::vector<std::unique_ptr<std::string>> names;
    int anyInt = 0;
    std::vector<JSMapEntry> rows;
    for (int i = 1; i <= count; ++i) {
        names.push_back(std::make_unique<std::string>("p" + std::to_string(i)));
        rows.emplace_back(names.back()->c_str(), PositionIn(&Part::m_number), anyInt);
    }
    return rows;
}

/// A context, and objects of run-time classes in it. Objects end first, then the classes, then the context.
class ClassTest : public ScriptTest
{
protected:
    Table& Make(const char* name, CJScriptLinkClass* parent, std::vector<JSMapEntry> rows)
    {
        m_tables.push_back(std::make_unique<Table>(name, parent, std::move(rows)));
        return *m_tables.back();
    }

    /// A new object, owned by the test, as a property of the global object.
    Part& Child(const wxString& name, CJScriptLinkClass& cls)
    {
        m_parts.push_back(std::make_unique<Part>(cls));
        EXPECT_TRUE(script.CreateChild(m_parts.back()->GetJSLink(), Global(), name, false, false));
        return *m_parts.back();
    }

    /// What a statement throws, as text; "nothing" when it does not.
    wxString Thrown(const wxString& statement)
    {
        return Show(wxS("try { ") + statement + wxS("; 'nothing' } catch (e) { String(e) }"));
    }

private:
    std::vector<std::unique_ptr<Table>> m_tables;
    std::vector<std::unique_ptr<Part>> m_parts;
};
