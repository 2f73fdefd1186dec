#include "administration/CheckCommand.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

#include "core/Operation.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "internet/InternetErrorText.h"
#include "internet/SectionMerge.h"
#include "net/Certificate.h"
#include "net/CertificateCheck.h"

namespace quillon {

namespace {

constexpr TickCount kPatienceAtTheEnd = 1000;

struct Advice {
  std::int32_t number;
  const char* text;
};

constexpr Advice kAdvice[] = {
    {internet_error::kNotConnected,
     "Look whether host and port are right, and whether a firewall lets this program out."},
    {internet_error::kTimedOut,
     "A port that speaks TLS from the first byte on says nothing to whoever does not: try the "
     "security \"tls\" there, and \"starttls\" on the others."},
    {internet_error::kNoEncryption,
     "Try the security \"tls\", with port 465 (SMTP) or 995 (POP3), or ask who runs the server."},
    {internet_error::kSecuringFailed,
     "Try the security \"starttls\" where the server talks before it is asked, and \"tls\" where "
     "it does not."},
    {internet_error::kLoginRefused,
     "Look at user and password. Big providers want a password for applications, or OAuth."},
    {internet_error::kNoCommonLogin,
     "Give what one of the methods needs: a user, a password, a token, or encryption."},
    {internet_error::kNoAccessToken,
     "Look at the keys of OAuth, and run quillon.exe /Authorize for this server anew."},
    {internet_error::kNameRefused, "Look at user and password."},
    {internet_error::kPasswordRefused, "Look at user and password."},
};

// The steps are told from the report, when they are over.
class Unheard final : public SessionListener {
 public:
  void OnStatus(std::string_view) override {}
  void OnProgress(std::uint64_t, std::uint64_t, std::uint32_t) override {}
};

class Checking {
 public:
  explicit Checking(const CheckPorts& ports)
      : ports_(ports),
        engine_(ports.loop, ports.network, ports.security, ports.composing, listener_) {}
  ~Checking() { engine_.Shutdown(kPatienceAtTheEnd); }
  Checking(const Checking&) = delete;
  Checking& operator=(const Checking&) = delete;

  bool Smtp(const SmtpSettings& settings) {
    const auto result = Run(engine_.LoginSMTP(settings));
    Tell("SMTP", settings, result);
    return Judge(result, SmtpErrorText(result.number));
  }

  bool Pop(const PopSettings& settings) {
    const auto result = Run(engine_.LoginPOP(settings));
    Tell("POP3", settings, result);
    return Judge(result, PopErrorText(result.number, Text(result.words)));
  }

 private:
  SessionResult Run(Task<SessionResult> login) {
    Operation<SessionResult> operation;
    operation.Start(std::move(login));
    ports_.loop.RunUntil([&] { return !operation.Running(); }, kNoDeadline);
    if (operation.Running()) operation.Abort();  // the program is being ended
    return operation.Aborted() ? SessionResult{internet_error::kNotConnected, {}}
                               : operation.Take();
  }

  // As far as it came.
  void Tell(const char* protocol, const SessionSettings& settings, const SessionResult& result) {
    const auto& report = engine_.Report();
    Say(std::string(protocol) + " at " + Text(settings.host) + ", port " +
        std::to_string(settings.port));
    if (!report.Address().empty()) Step("connected to " + report.Address());
    if (!report.TlsVersion().empty()) Step(report.TlsVersion() + " " + report.Cipher());
    if (!report.Certificate().empty()) TellCertificate(report);
    if (!report.Greeting().empty()) Step("greeting: " + Text(report.Greeting()));
    if (!report.Capabilities().empty()) {
      Step("it can: " + Text(ServerWords(Join(report.Capabilities(), ", "))));
    }
    if (!report.Login().empty()) Step("logged in by " + report.Login());
    if (result.number != internet_error::kSuccess) return;
    const bool secret =
        !settings.security.credentials.password.empty() || settings.security.HasToken();
    if (report.TlsVersion().empty() && secret) Step("NOTE: nothing is encrypted");
  }

  void TellCertificate(const SessionReport& report) {
    const auto& bytes = report.CertificateBytes();
    Step("certificate: " + report.Certificate());
    Step("its pin: " + CertificatePinText(ports_.security.crypto, bytes));
    if (const auto read = ReadCertificate(bytes)) {
      Step("that of its key: key:" + CertificatePinText(ports_.security.crypto, read->publicKey));
    }
  }

  bool Judge(const SessionResult& result, const std::string& text) {
    if (result.number == internet_error::kSuccess) {
      Step("All is well.");
      return true;
    }
    auto sentence = "FAILED (" + std::to_string(result.number) + ")";
    if (!text.empty()) sentence += ": " + text;
    Step(sentence);
    if (!result.detail.empty()) Step(Text(result.detail));
    const auto* const advice =
        std::find_if(std::begin(kAdvice), std::end(kAdvice),
                     [&](const Advice& row) { return row.number == result.number; });
    if (advice != std::end(kAdvice)) Step(advice->text);
    return false;
  }

  std::string Text(const std::string& bytes) const {
    return ports_.composing.codePage.ToText(bytes);
  }
  void Say(const std::string& line) { ports_.console.WriteLine(line); }
  void Step(const std::string& line) { Say("  " + line); }

  const CheckPorts& ports_;
  Unheard listener_;
  smtppop engine_;
};

// A server that the section says nothing of is not tried, nor a mailbox without a user, whom the
// script brings along, unless the account that this runs under can be it.
CheckRequest RequestOf(const std::string& name, const ServerSection& section,
                       const CodePage& codePage) {
  CheckRequest request;
  const auto isNamed = [](const ServerSection::Protocol& protocol) {
    return protocol.host || protocol.port || protocol.security || protocol.user;
  };
  if (isNamed(section.smtp)) {
    auto& smtp = request.smtp.emplace();
    smtp.host = codePage.ToBytes(name);
    smtp.port = 25;
    smtp.sender = "postmaster@localhost";  // nothing is sent, but there has to be one
    Apply(section, {}, codePage, smtp);
  }
  if (section.pop.user || (isNamed(section.pop) && NamesSystemLogin(WantedLogins(section, {})))) {
    auto& pop = request.pop.emplace();
    pop.host = codePage.ToBytes(name);
    pop.port = 110;
    Apply(section, {}, codePage, pop);
  }
  return request;
}

}  // namespace

bool Check(const std::vector<std::string>& arguments, ServerSections& servers,
           const CheckPorts& ports) {
  std::string failure;
  CheckRequest request;
  if (arguments.size() != 1) {
    failure = "It is: quillon.exe /Check NAME.";
  } else {
    try {
      request = RequestOf(arguments[0], servers.For(arguments[0]), ports.composing.codePage);
      if (!request.smtp && !request.pop) {
        failure = "There is no section [Server " + arguments[0] +
                  "] that says how SMTP is reached or who the user of POP3 is: set its keys with "
                  "/Configure.";
      }
    } catch (const ServerError& error) {
      failure = error.Text();
    }
  }
  if (failure.empty()) return CheckServers(ports, request);
  ports.console.WriteLine(failure);
  ports.console.Show();
  return false;
}

bool CheckServers(const CheckPorts& ports, const CheckRequest& request) {
  Checking checking(ports);
  bool well = true;
  if (request.smtp && !checking.Smtp(*request.smtp)) well = false;
  if (request.pop && !checking.Pop(*request.pop)) well = false;
  ports.console.Show();
  return well;
}

}  // namespace quillon
