#pragma once

#include "base/posix_detail.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The hash by which names are looked up, with keys drawn anew by each process: whoever writes a text cannot choose
/// names that all fall on one slot. It says nothing about order, so it must not decide any.
std::uint64_t HashOfName(std::wstring_view name);

/// The free slots of a table of names. They are looked at in no order, so that of many each would be a page of its own.
template <typename Slot> std::vector<Slot> MakeSlots(size_t count)
{
    std::vector<Slot> slots;
    slots.reserve(count);
    vcq::detail::PreferLargePages(slots.data(), count * sizeof(Slot));
    slots.resize(count);
    return slots;
}
