#include "internet/SmtpReply.h"

#include "core/Text.h"
#include "net/WireText.h"

namespace quillon {

namespace {

constexpr std::size_t kCodeLength = 3;

// Far more than any reply has; a server could go on for ever.
constexpr std::size_t kMostBytes = 64U * 1024;
constexpr std::size_t kMostHeard = 1024U * 1024;

}  // namespace

bool SmtpReply::AddLine(std::string_view line) {
  code_ = 0;
  for (const char digit : line.substr(0, kCodeLength)) {
    if (digit < '0' || digit > '9') break;
    code_ = code_ * 10 + (digit - '0');
  }
  if (size_ + line.size() > kMostBytes && !lines_.empty()) {
    size_ -= lines_.back().size();
    lines_.pop_back();
  }
  lines_.emplace_back(line.substr(0, kMostBytes));
  size_ += lines_.back().size();
  heard_ += line.size() + 2;
  if (line.size() <= kCodeLength || line[kCodeLength] != '-') return true;
  if (heard_ <= kMostHeard) return false;
  code_ = 0;
  return true;
}

std::string_view SmtpReply::Text() const {
  const auto& last = lines_.back();
  return last.size() > kCodeLength ? Trim(std::string_view(last).substr(kCodeLength))
                                   : std::string_view();
}

std::string_view ForwardPath(std::string_view replyText) {
  const auto open = replyText.find('<');
  if (open == std::string_view::npos) return {};
  const auto path = replyText.substr(open + 1);
  return Trim(path.substr(0, path.find('>')));
}

bool LeadsOn(std::string_view refusedPath, std::string_view forwardPath) {
  return !forwardPath.empty() && forwardPath != refusedPath && IsWireSafe(forwardPath);
}

}  // namespace quillon
