// Text in the ANSI code page and in UTF-16, as it comes through ANSI interfaces, and UTF-8.
#pragma once

#include <string>

namespace desk {

// A null pointer is the empty text.
std::string Utf8From(const char* ansi);
std::string Utf8From(const wchar_t* wide);

std::string AnsiFrom(const std::string& utf8);

}  // namespace desk
