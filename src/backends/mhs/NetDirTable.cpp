#include "backends/mhs/NetDirTable.h"

#include <utility>

#include "backends/mhs/SmfAddress.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestLine = 1000;
constexpr char kEndOfFile = '\x1A';

}  // namespace

std::optional<RecipientParts> NetDirEntry(std::string_view line) {
  const auto text = Trim(line);
  if (text.empty() || text.size() > kLongestLine || text.front() == ';' || text.front() == '#') {
    return std::nullopt;
  }
  RecipientParts entry;
  if (text.back() == '>') {
    entry = SplitRecipient(text);
  } else if (auto addresses = ParseSmfAddresses(text); addresses.size() == 1) {
    entry = std::move(addresses.front());
  }
  if (entry.address.find('@') == std::string::npos || !IsSmfAddress(entry.address)) {
    return std::nullopt;
  }
  if (entry.name.empty()) entry.name = entry.address;
  return entry;
}

NetDirPiece ReadNetDir(std::string_view piece, bool isLast, bool isCut) {
  NetDirPiece read;
  const auto mark = piece.find(kEndOfFile);
  read.isEnd = mark != std::string_view::npos;
  const bool endsHere = isLast || read.isEnd;
  const auto text = piece.substr(0, mark);
  std::size_t begin = 0;
  bool skips = isCut;
  for (;;) {
    const auto end = text.find_first_of("\r\n", begin);
    if (end == std::string_view::npos && !endsHere) break;
    if (!skips) {
      auto entry = NetDirEntry(text.substr(begin, end - begin));
      if (entry) read.entries.push_back(std::move(*entry));
    }
    skips = false;
    if (end == std::string_view::npos) {
      read.bytes = piece.size();
      return read;
    }
    begin = end + 1;
  }
  // A piece in which no line ends is a line that is too long, or the rest of one.
  read.isCut = begin == 0;
  read.bytes = read.isCut ? piece.size() : begin;
  return read;
}

}  // namespace quillon
