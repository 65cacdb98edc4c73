#pragma once

#include <string>

namespace vcq::detail
{

/// 32 hexadecimal digits that stand for a text where it would be too long, or does not fit as it is. Not a secret.
std::string Digest(const std::string& text);

} // namespace vcq::detail
