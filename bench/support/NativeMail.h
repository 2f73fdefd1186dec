// Our side of the Internet benchmarks: the back end as a Server object calls it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "internet/InternetBackEnd.h"
#include "internet/ProtocolLog.h"
#include "mail/INIUtilities.h"
#include "oauth/NoAccessTokens.h"
#include "platform/Platform.h"
#include "ports/LoginPrompt.h"

namespace quillon::bench {

// The benchmarks keep none.
class NoSecrets final : public SecretProtector {
 public:
  std::optional<std::string> Protect(std::string_view, Scope) override { return std::nullopt; }
  std::optional<std::string> Reveal(std::string_view) override { return std::nullopt; }
};

class NativeMail {
 public:
  // `directory` holds the configuration file.
  NativeMail(const std::string& directory, std::uint16_t smtpPort, std::uint16_t popPort);

  void SetMessage(const std::string& sender, const std::string& recipient, const std::string& body);
  void SetAttachment(const std::string& path);
  void SetMaximumHeaders(std::size_t count);
  // What servers offer is used, over TLS from the first byte on where that is wanted.
  void UseExtensions(bool tls);

  // Each throws std::runtime_error when the operation fails.
  void Login();
  // A new connection to the SMTP server, and its end.
  void Connect();
  void Logout();
  void Send();
  // Returns how many there are now.
  std::size_t LoadMessageHeaders();
  // The first message of the loaded headers; its files go to the directory. Returns their number.
  std::size_t LoadMessage(const std::string& directory);

 private:
  class NoMessageBox final : public MessageBoxPort {
   public:
    void Show(const std::string&, const std::string&, Icon) override {}
  };

  void Check(const char* operation, const MailResult& result);

  std::unique_ptr<NetworkLoop> loop_ = MakeNetworkLoop();
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> characterSets_ = MakeCharacterSets();
  std::unique_ptr<CharacterEncoder> characterEncoder_ = MakeCharacterEncoder();
  std::unique_ptr<LocalClock> clock_ = MakeLocalClock();
  NoLoginPrompt loginPrompt_;
  NoMessageBox messageBox_;
  clsINIUtilities configuration_;
  NoSecrets secrets_;
  ServerSections servers_{configuration_, nullptr, secrets_};
  ProtocolLog log_;
  AsynchNotifier notifier_;
  NoProgressDisplay progress_;
  std::unique_ptr<TlsLibrary> tls_ = MakeTlsLibrary();
  std::unique_ptr<Crypto> crypto_ = MakeCrypto();
  NoAccessTokens tokens_{*loop_};
  FetchedIndex fetched_;
  InternetBackEnd backEnd_;
  InstanceState instance_;
  SharedState shared_;
  MailRequest request_{instance_, shared_};
};

}  // namespace quillon::bench
