#include "base/patience_detail.h"

#include <utility>

namespace vcq::detail
{

[[gnu::tls_model("initial-exec")]] static thread_local AskToGoOn asked = nullptr;

Patience::Patience(AskToGoOn ask) : m_before(std::exchange(asked, ask)) {}

Patience::~Patience()
{
    asked = m_before;
}

bool MayGoOn(std::size_t bytes)
{
    return !asked || asked(bytes);
}

} // namespace vcq::detail
