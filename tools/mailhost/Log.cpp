#include "Log.h"

#include <cerrno>
#include <system_error>

#include "Text.h"

namespace mailhost {

namespace {

std::string ContentSize(std::uint64_t bytes) {
  return "<" + std::to_string(bytes) + " bytes>";
}

}  // namespace

std::string_view NameOf(Protocol protocol) {
  return protocol == Protocol::kSmtp ? "SMTP" : "POP";
}

std::string Masked(Protocol protocol, std::string_view line) {
  constexpr std::string_view kPass = "PASS";
  const bool pop = protocol == Protocol::kPop;
  if (pop && StartsIgnoringCase(line, kPass) && line.size() > kPass.size()) return "PASS ****";
  std::string_view rest = line;
  const std::string command = ToUpper(TakeWord(rest));
  if (command != "AUTH" && !(pop && command == "APOP")) return Printable(line);
  // The mechanism or the name stays; what follows it does not.
  const std::string word = Printable(TakeWord(rest));
  if (rest.empty()) return Printable(line);
  return command + " " + word + " " + std::string(kMasked);
}

Log::Log(const std::string& path) : file_(std::fopen(path.c_str(), "we")) {
  if (!file_) throw std::system_error(errno, std::generic_category(), path);
  std::setvbuf(file_.get(), nullptr, _IOLBF, BUFSIZ);
}

void Log::Client(Protocol protocol, std::string_view line) {
  if (file_) Line(protocol, " C: ", Masked(protocol, line));
}

void Log::Server(Protocol protocol, std::string_view bytes) {
  if (!file_) return;
  for (const std::string_view line : SplitLines(bytes)) Line(protocol, " S: ", Printable(line));
}

void Log::ClientContent(Protocol protocol, std::uint64_t bytes) {
  if (file_) Line(protocol, " C: ", ContentSize(bytes));
}

void Log::ServerContent(Protocol protocol, std::uint64_t bytes) {
  if (file_) Line(protocol, " S: ", ContentSize(bytes));
}

void Log::Event(Protocol protocol, std::string_view text) {
  if (file_) Line(protocol, " -- ", text);
}

void Log::Line(Protocol protocol, std::string_view who, std::string_view text) {
  std::string line(NameOf(protocol));
  line.append(who).append(text).append("\n");
  std::fwrite(line.data(), 1, line.size(), file_.get());
}

}  // namespace mailhost
