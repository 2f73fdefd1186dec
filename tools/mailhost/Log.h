// The conversation log: one line per protocol line, such as "SMTP C: MAIL FROM:<a@b>".
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace mailhost {

enum class Protocol { kSmtp, kPop };

// "SMTP" or "POP".
std::string_view NameOf(Protocol protocol);

// In place of a secret.
constexpr std::string_view kMasked = "****";

// The line as it may be shown: the secret in a PASS, APOP or AUTH becomes "****".
std::string Masked(Protocol protocol, std::string_view line);

// Writes nothing at all until it is given a file.
class Log {
 public:
  Log() = default;
  // Starts `path` anew, one write per line. Throws std::system_error.
  explicit Log(const std::string& path);

  // A line of the client, without its line end; shown masked.
  void Client(Protocol protocol, std::string_view line);
  // Bytes of the server: every line of them makes a line of the log.
  void Server(Protocol protocol, std::string_view bytes);
  // Message content, which is not written out.
  void ClientContent(Protocol protocol, std::uint64_t bytes);
  void ServerContent(Protocol protocol, std::uint64_t bytes);
  // Something that happened, such as "closed".
  void Event(Protocol protocol, std::string_view text);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void Line(Protocol protocol, std::string_view who, std::string_view text);

  std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace mailhost
