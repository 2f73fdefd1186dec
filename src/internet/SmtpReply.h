// A reply of an SMTP server (RFC 5321, 4.2).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon {

class SmtpReply {
 public:
  // Takes the next line; true when it was the last one of the reply, or there have been so many
  // that none will be.
  bool AddLine(std::string_view line);

  // The number that the first three characters of the last line begin with; 0 when there is none,
  // or the reply has no end.
  int Code() const noexcept { return code_; }
  // 250, or 251: what was asked for has been done.
  bool IsPositive() const noexcept { return code_ == 250 || code_ == 251; }
  // Each as it came, without its line end. Of an endless reply the first ones and the last.
  const std::vector<std::string>& Lines() const noexcept { return lines_; }
  // Of the last line: what stands behind the code, trimmed.
  std::string_view Text() const;

 private:
  int code_ = 0;
  std::size_t heard_ = 0;  // bytes
  std::vector<std::string> lines_;
  std::size_t size_ = 0;  // of the lines
};

// The address between "<" and ">" of a reply that names a forward path; empty when there is none.
std::string_view ForwardPath(std::string_view replyText);

// Whether the recipient is elsewhere, and the reply says where (RFC 5321, 3.4), as it should.
bool LeadsOn(std::string_view refusedPath, std::string_view forwardPath);

}  // namespace quillon
