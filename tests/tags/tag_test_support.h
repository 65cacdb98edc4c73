#pragma once

#include "parser/parser_unit.h"
#include "preprocessor/preprocessor.h"
#include "tags/tag_parser.h"
#include "tests/support/preprocess_bench.h"

#include <gtest/gtest.h>
#include <wx/mstream.h>

#include <string>
#include <vector>

/// Options as "NAME=VALUE", in their order, separated by "; ".
inline std::string OptionsOf(const CTagBlock& block)
{
    std::string options;
    CHashStringToString::const_iterator it;
    for (bool more = block.GetOption().First(it); more; more = block.GetOption().Next(it))
        options += (options.empty() ? "" : "; ") + it->first.utf8_string() + "=" + it->second.utf8_string();
    return options;
}

/// The units of a block, holes left out, as "LINE:TEXT", each followed by "|".
inline std::string LinesOf(const CParserBlock* block)
{
    if (!block)
        return "none";
    std::string lines;
    for (unsigned int slot = 0; slot < block->GetCount(); ++slot) {
        if (const CParserUnit* const unit = block->GetUnit(slot))
            lines += std::to_string(unit->m_line) + ":" + unit->m_text.utf8_string() + "|";
    }
    return lines;
}

/// The title of a block: its hierarchy's first line.
inline std::string TitleOf(const CTagBlock& block)
{
    return block.GetType().utf8_string() + "=" + block.GetName().utf8_string();
}

/// All of a block: its title, options, kind, lines of headers and content, and the same of its sub-blocks.
inline std::string FullDump(const CTagBlock& block)
{
    std::string text = TitleOf(block) + (block.IsDoubleTag() ? " double" : "") + " {" + OptionsOf(block) + "} " +
                       LinesOf(block.GetBeginHeader()) + " " + LinesOf(&block) + " " + LinesOf(block.GetEndHeader());
    for (size_t i = 0; i < block.GetSubBlockCount(); ++i)
        text += "\n(" + FullDump(*block.GetSubBlock(i)) + ")";
    return text;
}

/// What a block writes about its sub-blocks.
inline std::string HierarchiesOf(const CTagBlock& block)
{
    wxMemoryOutputStream stream;
    EXPECT_TRUE(block.WriteHierarchies(stream));
    std::string bytes(stream.GetSize(), ' ');
    stream.CopyTo(bytes.data(), bytes.size());
    return bytes;
}

/// A tag parser that takes its texts as they are.
class TagBench
{
public:
    explicit TagBench(const wchar_t* begin = L"<", const wchar_t* end = L">") : parser(&pp, begin, end)
    {
        pp.Desactivate();
    }

    /// Reads a text named "main.txt". The hierarchies of its outermost blocks, one below the other; or see Failure.
    std::string Read(const wxString& text)
    {
        parser.ClearError();
        parser.Parse(text, "main.txt", nullptr, false);
        const long result = parser.ParseBlock(parser.GetLastBlock(0));
        return result == 0 ? Hierarchies() : LastFailure(parser, result);
    }

    /// Makes units of a text, one a line, without reading its tags.
    CTagBlock& Load(const wxString& text)
    {
        parser.Parse(text, "main.txt", nullptr, false);
        return Text();
    }

    /// The block of the last text.
    CTagBlock& Text() { return dynamic_cast<CTagBlock&>(*parser.GetLastBlock(0)); }

    CTagBlock& Outermost(size_t index = 0) { return *Text().GetSubBlock(index); }

    CPreprocessor pp{nullptr, true};
    CTagParser parser;

private:
    std::string Hierarchies()
    {
        wxString text;
        for (size_t i = 0; i < Text().GetSubBlockCount(); ++i)
            text += (i == 0 ? "" : "\n") + Outermost(i).GetHierarchy(0);
        return text.utf8_string();
    }
};

class TagTest : public ::testing::Test, protected TagBench
{};
