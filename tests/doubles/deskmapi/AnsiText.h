// Text in the system's ANSI code page and in UTF-16, as it comes through Simple MAPI, and UTF-8.
#pragma once

#include <string>

namespace deskmapi {

// A null pointer is the empty text.
std::string Utf8From(const char* ansi);
std::string Utf8From(const wchar_t* wide);

std::string AnsiFrom(const std::string& utf8);

}  // namespace deskmapi
