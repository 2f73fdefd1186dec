// What HTML says to somebody who reads plain text.
#pragma once

#include <string>
#include <string_view>

namespace quillon {

// Paragraphs stand apart by an empty line, items of lists have their marks, the cells of a row are
// separated by tabs, and the address of a link stands behind it as "<https://example.com/>". A
// picture is its alternative text. Lines end in CR LF; they are not wrapped. Takes and gives UTF-8,
// in linear time.
std::string PlainTextOfHtml(std::string_view html);

}  // namespace quillon
