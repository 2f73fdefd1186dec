// Logins that the system makes itself, as with an account of a Windows domain: whoever asks for one
// only carries bytes to and fro.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quillon {

enum class SystemPackage {
  kNtlm,
  kNegotiate,  // Kerberos or NTLM, as the system chooses
};

// UTF-8.
struct SystemAccount {
  // "user", "DOMAIN\user" or "user@domain"; empty together with the password: the account that this
  // process runs under.
  std::string loginName;
  std::string password;
};

// For one login. After a failure, which is a whole sentence, it is not asked again. A call may take
// as long as the system takes to ask a domain controller.
class SystemContext {
 public:
  struct Step {
    std::string response;  // may be empty
    bool complete = false;
    std::string failure;
  };

  SystemContext() = default;
  virtual ~SystemContext() = default;
  SystemContext(const SystemContext&) = delete;
  SystemContext& operator=(const SystemContext&) = delete;

  // What the server is to be told; the first call has no challenge.
  virtual Step Advance(std::string_view challenge) = 0;

  // Behind the last step: messages that both ends sign. None when the system refuses, as one that
  // was changed on the way.
  virtual std::optional<std::string> Wrap(std::string_view message) = 0;
  virtual std::optional<std::string> Unwrap(std::string_view message) = 0;
};

class SystemLogin {
 public:
  SystemLogin() = default;
  virtual ~SystemLogin() = default;
  SystemLogin(const SystemLogin&) = delete;
  SystemLogin& operator=(const SystemLogin&) = delete;

  virtual bool Knows(SystemPackage package) const = 0;

  // `target` is the service's name, as "smtp/mail.example.com". `binding` is what the login is
  // bound to (RFC 5056), with its type and a colon in front; empty: nothing. Never null.
  virtual std::unique_ptr<SystemContext> Begin(SystemPackage package, const std::string& target,
                                               const SystemAccount& account,
                                               const std::string& binding) const = 0;
};

}  // namespace quillon
