#pragma once

#include <cstddef>

namespace vcq::detail
{

/// Answers whether work that takes long may go on, and may take so many bytes more.
using AskToGoOn = bool (*)(std::size_t bytes);

/// While it lives, what takes long on this thread asks `ask` now and then whether to go on.
class Patience
{
public:
    explicit Patience(AskToGoOn ask);
    ~Patience();
    Patience(const Patience&) = delete;
    Patience& operator=(const Patience&) = delete;

private:
    AskToGoOn m_before;
};

/// True where nobody is to be asked.
bool MayGoOn(std::size_t bytes = 0);

} // namespace vcq::detail
