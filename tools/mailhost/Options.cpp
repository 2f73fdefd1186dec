#include "Options.h"

#include <string_view>

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
    "  --user NAME        the POP3 login; without it any login is good\n"
    "  --password PW      its password\n"
    "  --no-lock          let several POP3 sessions share the maildrop\n"
    "  --faults FILE      go wrong as FILE says, or play the conversation in it (repeatable)\n"
    "  --log FILE         write the conversations to FILE\n"
    "  --help             print this text\n"
    "\n"
    "When both ports listen it prints \"smtp PORT\", \"pop PORT\" and \"ready\". SIGTERM ends "
    "it.\n";

namespace {

std::uint16_t ParsePort(const std::string& text) {
  const auto number = ParseNumber(text);
  if (!number || *number > 65535) throw UsageError("\"" + text + "\" is no port number");
  return static_cast<std::uint16_t>(*number);
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
    {"--help", false, [](Options& o, const std::string&) { o.help = true; }},
};

const OptionRow& FindRow(const std::string& name) {
  for (const OptionRow& row : kRows) {
    if (row.name == name) return row;
  }
  throw UsageError(name + ": no such option (--help lists them)");
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
