#include "xml/parser_feed_detail.h"

#include <algorithm>
#include <cstring>

/// Only parsers that put off looking again at a long token, until there is much more of it, have this function.
extern "C" [[gnu::weak]] XML_Bool XML_SetReparseDeferralEnabled(XML_Parser parser, XML_Bool enabled);

namespace xml_detail
{

namespace
{

/// How often the bytes of a document are looked at again, on average, before that is put off.
constexpr unsigned long long mostSeenAgain = 64;

} // namespace

bool ParserFeed::Feed(const char* block, size_t size, bool last)
{
    size_t at = 0;
    for (; size - at >= pieceSize; at += pieceSize)
        if (!FeedPiece(block + at, pieceSize, false))
            return false;
    return !last || FeedPiece(block + at, size - at, true);
}

/// Parsers of old start a token that they have not seen the end of again with each piece, which takes quadratic time
/// for long ones. For them pieces that cannot end a token are held back, and others too when too much was looked at
/// again already. Newer ones put it off by themselves, at places that depend on the pieces.
bool ParserFeed::FeedPiece(const char* piece, size_t size, bool last)
{
    const unsigned long long pending = m_fed - static_cast<unsigned long long>(XML_GetCurrentByteIndex(m_parser));
    if (XML_SetReparseDeferralEnabled || (m_held.empty() && (last || pending < pieceSize)))
        return Parse(piece, size, last);
    m_held.append(piece, size);
    const bool affordable = m_seenAgain + pending <= mostSeenAgain * (m_fed + m_held.size());
    const bool mayEnd = affordable && std::memchr(piece, '>', size);
    if (!last && !mayEnd && m_held.size() < std::max<unsigned long long>(pending, blockSize))
        return true;
    m_seenAgain += pending;
    const std::string bytes = std::move(m_held);
    m_held.clear();
    return Parse(bytes.data(), bytes.size(), last);
}

bool ParserFeed::Parse(const char* bytes, size_t size, bool last)
{
    m_fed += size;
    return XML_Parse(m_parser, bytes, static_cast<int>(size), last) == XML_STATUS_OK;
}

} // namespace xml_detail
