// Header lines into a header record: the first line of the input is the date format.
#include "codec/HeaderField.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "MemoryFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using quillon::fuzz::Require;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto takeLine = [&text] {
    const size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
  };
  const std::string_view dateFormat = takeLine();
  quillon::HeaderTable table(1);
  quillon::HeaderLineReader reader;
  while (!text.empty()) {
    const std::string_view line = takeLine();
    reader.Store(table, 0, line, dateFormat);
    const quillon::HeaderRecord& record = table[0];
    Require(record.priority >= 1 && record.priority <= 5);
    Require(record.to.size() + record.subject.size() + record.originator.size() <= size);
    // The short cut for folded lines must not be seen.
    quillon::HeaderTable other(table);
    quillon::StoreHeaderField(other, 0, "From", "", quillon::kTrue);
    Require(other[0].replyAddress == record.originator);
  }
  return 0;
}
