#pragma once

#include <wx/string.h>

class CXmlNodeRef;

/// Moves `node` along a path: a leading "/" climbs to the topmost ancestor, then each part between "." goes one child
/// down: "Item(N)" to the child at the position N, counted from 0, "NAME[ATTRIBUTE=VALUE]" to the first child of that
/// name with that attribute, anything else to the first child of that name. Nothing in place of the parts goes nowhere.
/// @return false when a step finds no node; `node` is then where it was.
bool FollowNodePath(const wxString& path, CXmlNodeRef& node);
