// The commands over a blocking socket with nothing around them: the least that they can take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillon::bench {

// Lines as base64 has them, `size` bytes in all.
std::string Base64Lines(std::size_t size);

class BareSocket {
 public:
  explicit BareSocket(std::uint16_t port);
  ~BareSocket();
  BareSocket(const BareSocket&) = delete;
  BareSocket& operator=(const BareSocket&) = delete;

  void Write(std::string_view bytes) const;
  // Writes, and reads on until the answer ends with `end`; it must begin with `begin`. Returns its
  // length.
  std::size_t Ask(std::string_view bytes, std::string_view begin,
                  std::string_view end = "\r\n") const;

 private:
  int socket_;
};

class BareSmtp {
 public:
  BareSmtp(std::uint16_t port, const std::string& sender, const std::string& recipient);

  // Header and text.
  void Send(const std::string& message) const;
  // So many bytes, the block again and again.
  void Send(std::uint64_t bytes, const std::string& block) const;

 private:
  void SayEnvelope() const;

  BareSocket socket_;
  std::string mail_;
  std::string rcpt_;
};

class BarePop {
 public:
  explicit BarePop(std::uint16_t port);

  // Returns the number of bytes of all headers.
  std::size_t LoadHeaders(std::size_t count) const;

 private:
  BareSocket socket_;
};

}  // namespace quillon::bench
