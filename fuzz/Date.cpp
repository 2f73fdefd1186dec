// Dates: a text and a format, between them a line end.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "MemoryFiles.h"
#include "codec/DateFormat.h"
#include "codec/HeaderDate.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  const std::string_view text = input.substr(0, input.find('\n'));
  const std::string_view format = input.substr(std::min(text.size() + 1, size));
  quillon::ConvertHeaderDate(text, format);
  const auto date = quillon::ParseDate(text);
  if (!date) return 0;
  // No symbol gives more than the long date, of at most 29 characters.
  Require(quillon::FormatDate(*date, format).size() <= 29 * (format.size() + 1));
  for (const std::string_view pattern : {"m/d/yyyy h:nn:ss AM/PM", "yyyy-mm-dd hh:nn:ss"}) {
    const auto again = quillon::ParseDate(quillon::FormatDate(*date, pattern));
    Require(again && quillon::FormatDate(*again, "yyyy y hh:nn:ss") ==
                         quillon::FormatDate(*date, "yyyy y hh:nn:ss"));
  }
  return 0;
}
