#include "Options.h"

#include <functional>
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

std::uint16_t ParsePort(const std::string& option, const std::string& text) {
  const auto number = ParseNumber(text);
  if (!number || *number > 65535) throw UsageError(option + ": \"" + text + "\" is no port number");
  return static_cast<std::uint16_t>(*number);
}

struct OptionRow {
  std::string_view name;
  std::function<void(Options&)> set{};                           // one of an option alone
  std::function<void(Options&, const std::string&)> setValue{};  // or one with a value
};

const OptionRow kRows[] = {
    {"--smtp-port",
     {},
     [](Options& o, const std::string& v) { o.smtpPort = ParsePort("--smtp-port", v); }},
    {"--pop-port",
     {},
     [](Options& o, const std::string& v) { o.popPort = ParsePort("--pop-port", v); }},
    {"--store", {}, [](Options& o, const std::string& v) { o.store = v; }},
    {"--user", {}, [](Options& o, const std::string& v) { o.user = v; }},
    {"--password", {}, [](Options& o, const std::string& v) { o.password = v; }},
    {"--faults", {}, [](Options& o, const std::string& v) { o.faults.push_back(v); }},
    {"--log", {}, [](Options& o, const std::string& v) { o.log = v; }},
    {"--no-store", [](Options& o) { o.noStore = true; }, {}},
    {"--no-lock", [](Options& o) { o.noLock = true; }, {}},
    {"--help", [](Options& o) { o.help = true; }, {}},
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
    if (row.set) {
      row.set(options);
    } else if (i + 1 < argc) {
      row.setValue(options, argv[++i]);
    } else {
      throw UsageError(name + ": a value is needed");
    }
  }
  if (!options.help) CheckComplete(options);
  return options;
}

}  // namespace mailhost
