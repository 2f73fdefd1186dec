// A message over a blocking socket with nothing around it: the least that sending can take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quillon::bench {

class BareSmtp {
 public:
  BareSmtp(std::uint16_t port, const std::string& sender, const std::string& recipient);
  ~BareSmtp();
  BareSmtp(const BareSmtp&) = delete;
  BareSmtp& operator=(const BareSmtp&) = delete;

  // A message of so many bytes of base64 lines out of memory.
  void Send(std::uint64_t bytes) const;

 private:
  void Write(const char* data, std::size_t size) const;
  void Say(const std::string& line, char firstDigit) const;

  int socket_;
  std::string sender_;
  std::string recipient_;
};

}  // namespace quillon::bench
