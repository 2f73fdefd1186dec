// Forms in application/x-www-form-urlencoded (RFC 6749, appendix B).
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace quillon {

std::string FormEncoded(std::string_view text);

// A field without a value is left out.
std::string FormBody(std::initializer_list<std::pair<std::string_view, std::string_view>> fields);

}  // namespace quillon
