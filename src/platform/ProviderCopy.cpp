#include "platform/ProviderCopy.h"

#include "core/Utf8.h"

namespace quillon {

namespace {

constexpr std::size_t kLongestText = 64U << 20U;
constexpr std::size_t kLongestId = 1000;
constexpr QuillonUint32 kMostRecipients = 100000;

LocalTime TimeOf(const QuillonTime& from) {
  LocalTime time;
  time.year = from.year;
  time.month = from.month;
  time.day = from.day;
  time.hour = from.hour;
  time.minute = from.minute;
  time.second = from.second;
  return time;
}

}  // namespace

bool ProviderCopy::CopyBytes(const void* from, void* to, std::size_t size) const {
  struct Bytes {
    const void* from;
    void* to;
    std::size_t size;
  } bytes{from, to, size};
  if (size == 0) return true;
  if (from == nullptr) return false;
  return guard_.run(
      [](void* context) {
        const auto& copied = *static_cast<Bytes*>(context);
        std::memcpy(copied.to, copied.from, copied.size);
      },
      &bytes);
}

bool ProviderCopy::CopyAsBytes(const QuillonText& from, std::size_t longest,
                               std::string& to) const {
  if (from.length > longest) return false;
  to.resize(from.length);
  return CopyBytes(from.bytes, to.data(), to.size());
}

bool ProviderCopy::Copy(const QuillonText& from, std::string& to) const {
  if (!CopyAsBytes(from, kLongestText, to)) return false;
  if (!IsUtf8(to)) to = Utf8FromUtf16(Utf16FromUtf8(to));
  return true;
}

bool ProviderCopy::Copy(const QuillonText* from, std::string& to) const {
  QuillonText text{};
  return CopyBytes(from, &text, sizeof text) && Copy(text, to);
}

bool ProviderCopy::Copy(const QuillonParty& from, ProviderParty& to) const {
  to.kind = from.kind;
  return Copy(from.name, to.name) && Copy(from.address, to.address);
}

bool ProviderCopy::Copy(const QuillonParty* from, QuillonUint32 count,
                        std::vector<ProviderParty>& to) const {
  if (count > kMostRecipients) return false;
  std::vector<QuillonParty> parties(count);
  if (!CopyBytes(from, parties.data(), count * sizeof(QuillonParty))) return false;
  to.resize(count);
  for (std::size_t i = 0; i < parties.size(); ++i) {
    if (!Copy(parties[i], to[i])) return false;
  }
  return true;
}

bool ProviderCopy::Copy(const QuillonEntry& from, ProviderEntry& to) const {
  to.isGroup = (from.flags & QUILLON_ENTRY_GROUP) != 0;
  return Copy(from.name, to.name) && Copy(from.address, to.address);
}

bool ProviderCopy::Copy(const QuillonHeader& from, ProviderHeader& to) const {
  to.date = TimeOf(from.date);
  to.importance = from.importance;
  to.bytes = from.bytes;
  to.fileCount = from.fileCount;
  to.unread = (from.flags & QUILLON_MESSAGE_UNREAD) != 0;
  to.receipt = (from.flags & QUILLON_MESSAGE_RECEIPT) != 0;
  return from.id.length != 0 && CopyAsBytes(from.id, kLongestId, to.id) &&
         Copy(from.subject, to.subject) && Copy(from.from, to.from) && Copy(from.to, to.to) &&
         Copy(from.cc, to.cc) && Copy(from.type, to.type) && Copy(from.dateText, to.dateText);
}

bool ProviderCopy::Copy(const QuillonMessage& from, ProviderMessage& to) const {
  to.date = TimeOf(from.date);
  to.importance = from.importance;
  to.receipt = (from.flags & QUILLON_MESSAGE_RECEIPT) != 0;
  return Copy(from.subject, to.subject) && Copy(from.text, to.text) && Copy(from.type, to.type) &&
         Copy(from.from, to.from) && Copy(from.replyTo, to.replyTo) &&
         Copy(from.recipients, from.recipientCount, to.recipients) &&
         Copy(from.dateText, to.dateText);
}

}  // namespace quillon
