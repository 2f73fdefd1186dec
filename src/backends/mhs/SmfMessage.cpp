#include "backends/mhs/SmfMessage.h"

#include <utility>

#include "core/Text.h"

namespace quillon {

std::string SmfValue(const SmfMessage& message, std::string_view name) {
  for (const auto& field : message.fields) {
    if (EqualsIgnoreCase(field.name, name)) return field.value;
  }
  return {};
}

std::vector<SmfAttachment> SmfAttachments(const SmfMessage& message) {
  std::vector<SmfAttachment> attachments;
  std::string early;  // a name that stands before its file, which older programs write
  for (const auto& field : message.fields) {
    if (EqualsIgnoreCase(field.name, "Attachment")) {
      attachments.push_back({field.value, std::exchange(early, {})});
    } else if (EqualsIgnoreCase(field.name, "Attachment-name")) {
      const bool isLate = !attachments.empty() && attachments.back().name.empty();
      (isLate ? attachments.back().name : early) = field.value;
    }
  }
  return attachments;
}

std::string CleanSmfValue(std::string_view value) {
  constexpr std::string_view kLineEnds("\r\n\0", 3);
  constexpr std::string_view kWhite = " \t";
  std::string clean;
  clean.reserve(value.size());
  bool inRun = false;
  for (const char c : value) {
    const bool ends = kLineEnds.find(c) != std::string_view::npos;
    if (!ends) clean += c;
    if (ends && !inRun) clean += ' ';
    inRun = ends;
  }
  clean.resize(clean.find_last_not_of(kWhite) + 1);
  clean.erase(0, clean.find_first_not_of(kWhite));
  return clean;
}

}  // namespace quillon
