#include "internet/HeaderCollector.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/Text.h"
#include "internet/HeldMemory.h"

namespace quillon {

namespace {

// Of one header; what comes after that is left out. Long recipient lists fit many times over.
constexpr std::size_t kMostHeaderBytes = 16U * 1024 * 1024;

// What the table may take in memory: little of what a 32-bit process has, whose other parts, and
// what is still to be done with the table, need room too.
constexpr std::size_t kMostMemory = 128U * 1024 * 1024;

// "R" in the Status field is what mail readers write into a message they have shown.
bool IsRead(const HeaderRecord& record) {
  return UpperAscii(record.status).find('R') != std::string::npos;
}

// What servers add to a header or change in it from one session to the next.
bool IsVolatile(std::string_view line) {
  constexpr std::array<std::string_view, 5> kNames = {
      "STATUS:", "X-STATUS:", "X-UIDL:", "X-KEYWORDS:", "CONTENT-LENGTH:"};
  return std::any_of(kNames.begin(), kNames.end(), [&](auto name) {
    return line.size() >= name.size() && EqualsIgnoreCase(line.substr(0, name.size()), name);
  });
}

// FNV-1a.
class Fingerprint {
 public:
  void Add(std::string_view text) {
    for (const char c : text) Add(static_cast<unsigned char>(c));
    Add(0U);
  }
  std::uint64_t Value() const noexcept { return value_; }

 private:
  void Add(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3U; }

  std::uint64_t value_ = 0xCBF29CE484222325U;
};

}  // namespace

HeaderTable& HeaderCollector::Table() {
  ReadLines();
  if (!std::exchange(whole_, true)) table_.pop_back();
  return table_;
}

void HeaderCollector::OnBegin() {
  if (const auto begins = std::exchange(begins_, nullptr)) begins();
}

HeaderRecord& HeaderCollector::RecordOf(std::uint32_t number) {
  if (number == current_) return table_.back();
  const auto [found, isNew] = indexes_.try_emplace(number, table_.size());
  if (!isNew) return table_[found->second];
  ReadLines();
  current_ = number;
  whole_ = false;
  headerBytes_ = 0;
  reader_.Reset();
  table_.emplace_back().number = std::to_string(number);
  memory_ += HeldMemory(table_.back());
  RequireRoom();
  return table_.back();
}

void HeaderCollector::RequireRoom() {
  if (memory_ <= kMostMemory) return;
  whole_ = false;
  throw SessionFailure{internet_error::kOverflow};
}

void HeaderCollector::OnHeaderLine(std::uint32_t number, std::string_view text, bool complete) {
  RecordOf(number);
  headerBytes_ += text.size() + 1;
  if (headerBytes_ > kMostHeaderBytes) return;
  lines_.append(text);
  if (complete) lines_.push_back('\n');
}

void HeaderCollector::ReadLines() {
  if (lines_.empty()) return;
  auto& record = table_.back();
  memory_ -= HeldMemory(record);
  Fingerprint lines;
  std::string_view rest = lines_;
  while (!rest.empty()) {
    const auto length = rest.find('\n');
    const auto line = rest.substr(0, length);
    reader_.Store(table_, table_.size() - 1, line, options_.dateFormat);
    if (record.messageId.empty() && !IsVolatile(line)) lines.Add(line);
    rest.remove_prefix(std::min(length, rest.size() - 1) + 1);
  }
  lines_.clear();
  Fingerprint messageId;
  messageId.Add(record.messageId);
  record.identity = record.messageId.empty() ? lines.Value() : messageId.Value();
  memory_ += HeldMemory(record);
}

bool HeaderCollector::OnHeaderEnd(std::uint32_t number) {
  RecordOf(number);
  whole_ = true;
  if (options_.unreadOnly) ReadLines();
  if (options_.unreadOnly && IsRead(table_.back())) {
    memory_ -= HeldMemory(table_.back());
    table_.pop_back();
    indexes_.erase(number);
    current_ = 0;
  }
  return table_.size() < options_.maximum;
}

void HeaderCollector::OnNextRequested() {
  ReadLines();
  RequireRoom();
}

void HeaderCollector::OnIdentifier(std::uint32_t number, std::string_view identifier) {
  auto& record = RecordOf(number);
  memory_ -= HeldMemory(record);
  record.uniqueId = identifier;
  whole_ = true;
  memory_ += HeldMemory(record);
  RequireRoom();
}

}  // namespace quillon
