// UTF-8 text and the UTF-16 text of the Windows interfaces. Nothing that Windows or a client can
// hold is lost (core/Utf8.h).
#pragma once

#include <string>
#include <string_view>

namespace quillon {

std::wstring WideFromUtf8(std::string_view text);
std::string Utf8FromWide(std::wstring_view text);

}  // namespace quillon
