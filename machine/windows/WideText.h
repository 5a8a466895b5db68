// Paths of this computer in wide characters and back.
#pragma once

#include <windows.h>

#include <string>

namespace StandIn {

// UTF-16 units for a text in UTF-8, each in a WCHAR. A byte that is no UTF-8 becomes a lone surrogate, DC80h to DCFFh,
// so that every path has a wide name and that name leads back to it.
std::wstring WideText(const std::string& text);

// The text whose wide form that is.
std::string NarrowText(const std::wstring& text);

} // namespace StandIn
