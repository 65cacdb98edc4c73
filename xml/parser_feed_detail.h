#pragma once

#include <expat.h>

#include <cstddef>
#include <string>

namespace xml_detail
{

/// Gives a parser its input in the pieces that wxXmlDocument gives: white space at the beginning of a text is dropped
/// up to where a piece ends, so that other pieces would give another tree.
class ParserFeed
{
public:
    static constexpr size_t pieceSize = 1024;

    /// What is to be fed at once: whole pieces, except behind the last.
    static constexpr size_t blockSize = 64 * pieceSize;

    /// `parser` must live as long as the feed.
    explicit ParserFeed(XML_Parser parser) : m_parser(parser) {}

    /// False when the parser has stopped.
    bool Feed(const char* block, size_t size, bool last);

private:
    bool FeedPiece(const char* piece, size_t size, bool last);
    bool Parse(const char* bytes, size_t size, bool last);

    const XML_Parser m_parser;
    std::string m_held; ///< pieces of a token whose end is not in sight
    unsigned long long m_fed = 0;
    unsigned long long m_seenAgain = 0;
};

} // namespace xml_detail
