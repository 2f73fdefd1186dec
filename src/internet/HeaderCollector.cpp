#include "internet/HeaderCollector.h"

#include "core/Text.h"

namespace quillon {

namespace {

// Of one header; what comes after that is left out. Long recipient lists fit many times over.
constexpr std::size_t kMostHeaderBytes = 16U * 1024 * 1024;

// Of all headers together: more would not fit into a 32-bit process with everything else.
constexpr std::size_t kMostBytes = 256U * 1024 * 1024;

// "R" in the Status field is what mail readers write into a message they have shown.
bool IsRead(const HeaderRecord& record) {
  return UpperAscii(record.status).find('R') != std::string::npos;
}

}  // namespace

HeaderRecord& HeaderCollector::RecordOf(std::uint32_t number) {
  if (number == current_) return table_.back();
  const auto [found, isNew] = indexes_.try_emplace(number, table_.size());
  if (!isNew) return table_[found->second];
  ReadLines();
  current_ = number;
  headerBytes_ = 0;
  reader_.Reset();
  table_.emplace_back().number = std::to_string(number);
  return table_.back();
}

bool HeaderCollector::OnHeaderLine(std::uint32_t number, std::string_view text, bool complete) {
  RecordOf(number);
  headerBytes_ += text.size();
  allBytes_ += text.size();
  if (allBytes_ > kMostBytes) return false;
  if (headerBytes_ <= kMostHeaderBytes) lines_.append(text);
  if (complete) lines_.push_back('\n');
  return true;
}

void HeaderCollector::ReadLines() {
  std::string_view rest = lines_;
  while (!rest.empty()) {
    const auto length = rest.find('\n');
    reader_.Store(table_, table_.size() - 1, rest.substr(0, length), options_.dateFormat);
    rest.remove_prefix(length + 1);
  }
  lines_.clear();
}

bool HeaderCollector::OnHeaderEnd(std::uint32_t number) {
  RecordOf(number);
  if (options_.unreadOnly) ReadLines();
  if (options_.unreadOnly && IsRead(table_.back())) {
    table_.pop_back();
    indexes_.erase(number);
    current_ = 0;
  }
  return table_.size() < options_.maximum;
}

void HeaderCollector::OnIdentifier(std::uint32_t number, std::string_view identifier) {
  RecordOf(number).uniqueId = identifier;
}

}  // namespace quillon
