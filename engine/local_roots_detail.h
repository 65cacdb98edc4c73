#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "engine/js_types.h"

namespace qxjs
{

// The words this interface has returned, in order. A native frame or a local root scope remembers the size at its
// start and truncates to it at its end; outside of both, old words are dropped from the front.
class LocalRoots
{
public:
    bool IsFull() const { return m_size == m_words.size(); }
    // Room for more, without dropping any.
    void Grow() { m_words.resize(std::max<std::size_t>(1024, m_size * 2)); }
    // Only when it is not full.
    void Push(jsval v) { m_words[m_size++] = v; }

    std::size_t Size() const { return m_size; }
    // The scopes begun behind `size` end as well.
    void Truncate(std::size_t size)
    {
        if (m_scopes > size)
            EndScopesBehind(size);
        m_size = std::min(m_size, size);
    }
    void KeepNewest(std::size_t count)
    {
        if (m_size <= count)
            return;
        const jsval* const end = m_words.data() + m_size;
        std::copy(end - count, end, m_words.data());
        m_size = count;
    }

    // Scopes are nested. The word where one begins says where the one around it does.
    bool HasScopes() const { return m_scopes != 0; }
    void BeginScope()
    {
        Push(INT_TO_JSVAL(static_cast<jsint>(m_scopes)));
        m_scopes = m_size;
    }
    void EndScope()
    {
        m_size = m_scopes - 1;
        m_scopes = static_cast<std::size_t>(JSVAL_TO_INT(m_words[m_size]));
    }

    const jsval* begin() const { return m_words.data(); }
    const jsval* end() const { return m_words.data() + m_size; }

private:
    // Out of line: it hardly ever is needed where every native ends.
    [[gnu::noinline]] void EndScopesBehind(std::size_t size)
    {
        while (m_scopes > size)
            EndScope();
    }

    std::vector<jsval> m_words; // all that there is room for
    std::size_t m_size = 0;
    std::size_t m_scopes = 0; // the size behind the word where the innermost scope begins
};

} // namespace qxjs
