#include "internet/ProtocolLog.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "core/WholeFile.h"

namespace quillon {

std::string LogTime(const LocalTime& time) {
  std::array<char, 80> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month,
                time.day, time.hour, time.minute, time.second);
  return text.data();
}

ProtocolLog::ProtocolLog(FileSystem& files, std::string directory, std::string heading)
    : files_(files), directory_(std::move(directory)), heading_(std::move(heading)) {}

ProtocolLog::~ProtocolLog() = default;

void ProtocolLog::Start() {
  Stop();
  ++starts_;
  const auto path = WithSeparator(files_, directory_) + "POPDUMP.TXT";
  files_.RemoveFile(path);
  file_ = files_.Open(path, OpenMode::kCreate);
  if (!heading_.empty()) WriteDebug(heading_);
}

void ProtocolLog::Stop() {
  if (file_) file_->Close();
  file_.reset();
}

void ProtocolLog::WriteDebug(std::string_view prefix, std::string_view text) {
  if (!file_) return;
  line_.assign(prefix).append(text).append("\r\n");
  file_->Write({reinterpret_cast<const std::uint8_t*>(line_.data()), line_.size()});
}

}  // namespace quillon
