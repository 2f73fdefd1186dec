// What the program tells whoever started it: where they can read it, on the stream they have given,
// on the console they started it from, else in a box.
#pragma once

#include <windows.h>
#include <string>

namespace quillon {

// What was asked for: to the standard output.
void Inform(const std::wstring& text);

// Why the program ends with a failure, in one line: to the standard error output.
void Complain(const std::wstring& text);

// The system's words for one of its error numbers.
std::wstring SystemText(DWORD error);

}  // namespace quillon
