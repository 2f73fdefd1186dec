#include "Options.h"

#include <algorithm>
#include <string_view>

#include "LoginMechanism.h"
#include "Text.h"
#include "UsageError.h"

namespace mailhost {

const char* const kUsage =
    "Usage: mailhost --smtp-port N --pop-port N --store DIR [OPTION...]\n"
    "A small SMTP and POP3 host on 127.0.0.1, for development and tests.\n"
    "\n"
    "  --smtp-port N      listen for SMTP on port N; 0 takes a free one\n"
    "  --pop-port N       listen for POP3 on port N; 0 takes a free one\n"
    "  --store DIR        keep messages in the Maildir DIR, which is made when missing\n"
    "  --no-store         accept messages and discard them\n"
    "  --user NAME        the login; without it any login is good\n"
    "  --password PW      its password\n"
    "  --no-lock          let several POP3 sessions share the maildrop\n"
    "  --smtps-port N     listen for SMTP within TLS too\n"
    "  --pops-port N      listen for POP3 within TLS too\n"
    "  --starttls         offer STARTTLS and STLS on the other ports\n"
    "  --require-tls      take no mail and no login without TLS\n"
    "  --certificate FILE show the certificate in FILE (PEM); else one of its own\n"
    "  --key FILE         its key (PEM)\n"
    "  --write-root FILE  write the root of its own certificate to FILE (PEM)\n"
    "  --tls-version V    speak 1.2, 1.3, or a range such as 1.2-1.3\n"
    "  --auth LIST        offer the logins of LIST, with commas: PLAIN, LOGIN, CRAM-MD5,\n"
    "                     SCRAM-SHA-1, SCRAM-SHA-256, both with -PLUS, XOAUTH2, OAUTHBEARER\n"
    "  --token TEXT       the token of the last two\n"
    "  --apop             offer APOP\n"
    "  --require-login    take no mail without a login\n"
    "  --capabilities LIST      what EHLO lists, with commas, but STARTTLS and AUTH\n"
    "  --pop-capabilities LIST  what CAPA lists, with commas, but STLS and SASL\n"
    "  --faults FILE      go wrong as FILE says, or play the conversation in it (repeatable)\n"
    "  --log FILE         write the conversations to FILE\n"
    "  --help             print this text\n"
    "\n"
    "When all ports listen it prints \"smtp PORT\", \"pop PORT\", \"smtps PORT\" and \"pops "
    "PORT\",\n"
    "each when it is there, and \"ready\". SIGTERM ends it.\n";

namespace {

std::uint16_t ParsePort(const std::string& text) {
  const auto number = ParseNumber(text);
  if (!number || *number > 65535) throw UsageError("\"" + text + "\" is no port number");
  return static_cast<std::uint16_t>(*number);
}

// The words between commas; none at all for an empty text.
std::vector<std::string> ParseList(const std::string& text) {
  std::vector<std::string> list;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    if (const auto word = Trim(rest.substr(0, end)); !word.empty()) list.emplace_back(word);
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return list;
}

std::vector<std::string> ParseMechanisms(const std::string& text) {
  std::vector<std::string> names = ParseList(ToUpper(text));
  for (const std::string& name : names) {
    if (FindMechanism(name) == nullptr) throw UsageError("--auth: no such login: " + name);
  }
  return names;
}

struct OptionRow {
  std::string_view name;
  bool takesValue;
  void (*set)(Options& options, const std::string& value);
};

constexpr OptionRow kRows[] = {
    {"--smtp-port", true, [](Options& o, const std::string& v) { o.smtpPort = ParsePort(v); }},
    {"--pop-port", true, [](Options& o, const std::string& v) { o.popPort = ParsePort(v); }},
    {"--store", true, [](Options& o, const std::string& v) { o.store = v; }},
    {"--user", true, [](Options& o, const std::string& v) { o.user = v; }},
    {"--password", true, [](Options& o, const std::string& v) { o.password = v; }},
    {"--faults", true, [](Options& o, const std::string& v) { o.faults.push_back(v); }},
    {"--log", true, [](Options& o, const std::string& v) { o.log = v; }},
    {"--no-store", false, [](Options& o, const std::string&) { o.noStore = true; }},
    {"--no-lock", false, [](Options& o, const std::string&) { o.noLock = true; }},
    {"--smtps-port", true, [](Options& o, const std::string& v) { o.smtpsPort = ParsePort(v); }},
    {"--pops-port", true, [](Options& o, const std::string& v) { o.popsPort = ParsePort(v); }},
    {"--starttls", false, [](Options& o, const std::string&) { o.startTls = true; }},
    {"--require-tls", false, [](Options& o, const std::string&) { o.requireTls = true; }},
    {"--certificate", true, [](Options& o, const std::string& v) { o.tls.certificate = v; }},
    {"--key", true, [](Options& o, const std::string& v) { o.tls.key = v; }},
    {"--write-root", true, [](Options& o, const std::string& v) { o.tls.writeRoot = v; }},
    {"--tls-version", true, [](Options& o, const std::string& v) { o.tls.versions = v; }},
    {"--auth", true, [](Options& o, const std::string& v) { o.mechanisms = ParseMechanisms(v); }},
    {"--token", true, [](Options& o, const std::string& v) { o.token = v; }},
    {"--apop", false, [](Options& o, const std::string&) { o.apop = true; }},
    {"--require-login", false, [](Options& o, const std::string&) { o.requireLogin = true; }},
    {"--capabilities", true,
     [](Options& o, const std::string& v) { o.smtpCapabilities = ParseList(v); }},
    {"--pop-capabilities", true,
     [](Options& o, const std::string& v) { o.popCapabilities = ParseList(v); }},
    {"--help", false, [](Options& o, const std::string&) { o.help = true; }},
};

const OptionRow& FindRow(const std::string& name) {
  for (const OptionRow& row : kRows) {
    if (row.name == name) return row;
  }
  throw UsageError(name + ": no such option (--help lists them)");
}

void CheckTls(const Options& options) {
  const TlsSettings& tls = options.tls;
  if (tls.certificate.empty() != tls.key.empty()) {
    throw UsageError("--certificate and --key go together");
  }
  if (!tls.certificate.empty() && !tls.writeRoot.empty()) {
    throw UsageError("--write-root is for the host's own certificate");
  }
  const bool isUsed = options.requireTls || !tls.certificate.empty() || !tls.writeRoot.empty();
  if (isUsed && !options.NeedsTls()) {
    throw UsageError("--starttls, --smtps-port or --pops-port is needed");
  }
}

void CheckLogins(const Options& options) {
  if (options.apop && !options.password) throw UsageError("--apop needs --user and --password");
  if (options.requireLogin && options.mechanisms.empty()) {
    throw UsageError("--require-login needs --auth");
  }
  for (const std::string& name : options.mechanisms) {
    const MechanismRow& row = *FindMechanism(name);
    if (row.needsPassword && !options.password) {
      throw UsageError(name + " needs --user and --password");
    }
    if (row.needsToken && !options.token) throw UsageError(name + " needs --token");
    if (row.binds && !options.NeedsTls()) throw UsageError(name + " needs TLS");
  }
}

void CheckComplete(const Options& options) {
  if (!options.smtpPort) throw UsageError("--smtp-port is needed");
  if (!options.popPort) throw UsageError("--pop-port is needed");
  if (options.store.empty() && !options.noStore) {
    throw UsageError("--store is needed (or --no-store)");
  }
  if (options.user.has_value() != options.password.has_value()) {
    throw UsageError("--user and --password go together");
  }
  CheckTls(options);
  CheckLogins(options);
}

}  // namespace

Options ParseOptions(int argc, const char* const* argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string name = argv[i];
    const OptionRow& row = FindRow(name);
    if (row.takesValue && ++i == argc) throw UsageError(name + ": a value is needed");
    row.set(options, argv[i]);
  }
  if (!options.help) CheckComplete(options);
  return options;
}

}  // namespace mailhost
