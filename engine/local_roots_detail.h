#pragma once

#include <algorithm>
#include <vector>

#include "engine/js_types.h"

namespace qxjs
{

// The words this interface has returned, in order. A native frame or a local root scope remembers the size at its
// start and truncates to it at its end; outside of both, old words are dropped from the front.
class LocalRoots
{
public:
    void Push(jsval v) { m_words.push_back(v); }
    std::size_t Size() const { return m_words.size(); }
    void Truncate(std::size_t size)
    {
        if (size < m_words.size())
            m_words.resize(size);
    }
    void KeepNewest(std::size_t count)
    {
        if (m_words.size() > count)
            m_words.erase(m_words.begin(), m_words.end() - static_cast<std::ptrdiff_t>(count));
    }
    const std::vector<jsval>& Words() const { return m_words; }

private:
    std::vector<jsval> m_words;
};

} // namespace qxjs
