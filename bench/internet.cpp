// Sends small messages and loads headers beside libcurl, which takes the same steps with the same
// mail host, each side on one connection, and beside a bare socket that does nothing else.
//
// libcurl is given the finished message and hands over each header as it came; our side also
// composes the message, and makes a table of the fields.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/support/BareMail.h"
#include "bench/support/CurlMail.h"
#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/NativeMail.h"
#include "bench/support/OneProcessor.h"
#include "bench/support/Program.h"
#include "bench/support/Table.h"
#include "internet/OutgoingMessage.h"
#include "platform/Platform.h"

namespace quillon::bench {
namespace {

// Many short rounds: on a machine that does other things too, both sides of most of them meet the
// same.
constexpr int kSendRounds = 41;
constexpr int kMessagesPerRound = 300;
constexpr int kHeaderRounds = 15;
constexpr int kFileRounds = 9;
constexpr int kConnectionsPerRound = 100;
constexpr std::uintmax_t kLargeFile = 200U * 1024 * 1024;
constexpr std::size_t kHeaders = 10000;
constexpr std::size_t kFewHeaders = 1000;
constexpr std::size_t kManyHeaders = 100000;
constexpr const char* kSender = "sender@example.com";
constexpr const char* kRecipient = "reader@example.com";
constexpr const char* kAtLeast = ">= 1, wanted 1.5";

// 2 KiB, and the header comes on top.
std::string Body() {
  const std::string line = "A line of a small message, as people write, of 64 characters.\r\n";
  std::string body;
  while (body.size() < 2048) body += line;
  return body;
}

// The message that our side composes, for the side that has to be given it.
std::string FinishedMessage() {
  OutgoingMessage message;
  message.from = kSender;
  message.whoTo = {kRecipient};
  message.subject = "A small message";
  message.charset = "us-ascii";
  message.utcOffset = kUtcOffsetNotSet;
  message.version = "1.0";
  return BuildHeaderBlock(message, MakeLocalClock()->Now()) + Body();
}

// A mail host that speaks TLS too, with a root that this process trusts.
class TodaysHost {
 public:
  explicit TodaysHost(std::vector<std::string> options)
      : root_((scratch_.Path() / "root.pem").string()), host_(WithTls(std::move(options))) {
    // Read by our side when it makes a connection.
    ::setenv("SSL_CERT_FILE", root_.c_str(), 1);
  }

  const MailHost& Host() const noexcept { return host_; }
  CurlPlace Smtp(bool tls) const {
    return tls ? CurlPlace(host_.SmtpsPort(), root_) : CurlPlace(host_.SmtpPort());
  }
  CurlPlace Pop(bool tls) const {
    return tls ? CurlPlace(host_.PopsPort(), root_) : CurlPlace(host_.PopPort());
  }

 private:
  std::vector<std::string> WithTls(std::vector<std::string> options) const {
    for (const auto* const word : {"--smtps-port", "0", "--pops-port", "0", "--write-root"}) {
      options.emplace_back(word);
    }
    options.push_back(root_);
    return options;
  }

  ScratchDirectory scratch_;
  const std::string root_;
  MailHost host_;
};

class Send {
 public:
  explicit Send(const MailHost& host)
      : native_(scratch_.Path().string(), host.SmtpPort(), 0),
        curl_(host.SmtpPort(), kSender, kRecipient),
        bare_(host.SmtpPort(), kSender, kRecipient) {
    native_.SetMessage(kSender, kRecipient, Body());
  }

  void Native(int count) {
    for (int sent = 0; sent < count; ++sent) native_.Send();
  }
  void Curl(int count) {
    for (int sent = 0; sent < count; ++sent) curl_.Send(message_);
  }
  void Bare(int count) {
    for (int sent = 0; sent < count; ++sent) bare_.Send(message_);
  }

 private:
  ScratchDirectory scratch_;
  const std::string message_ = FinishedMessage();
  NativeMail native_;
  CurlSmtp curl_;
  BareSmtp bare_;
};

class Headers {
 public:
  Headers(const MailHost& host, std::size_t count)
      : count_(count),
        native_(scratch_.Path().string(), 0, host.PopPort()),
        curl_(host.PopPort()),
        bare_(host.PopPort()) {
    native_.SetMaximumHeaders(count);
  }

  void Native() {
    if (native_.LoadMessageHeaders() != count_) throw std::runtime_error("headers are missing");
  }
  void Curl() {
    if (curl_.LoadHeaders(count_) == 0) throw std::runtime_error("libcurl got no headers");
  }
  void Bare() { bare_.LoadHeaders(count_); }

 private:
  ScratchDirectory scratch_;
  std::size_t count_;
  NativeMail native_;
  CurlPop curl_;
  BarePop bare_;
};

template <typename Work>
Side PerSecond(std::size_t count, Work work) {
  return [=] { return static_cast<double>(count) / Seconds(work); };
}

void CompareSend(const std::string& where) {
  const MailHost host({"--no-store"});
  Send send(host);
  const auto name = "Send of messages of 2 KiB" + where;
  const auto native = PerSecond(kMessagesPerRound, [&] { send.Native(kMessagesPerRound); });
  const auto curl = PerSecond(kMessagesPerRound, [&] { send.Curl(kMessagesPerRound); });
  const auto bare = PerSecond(kMessagesPerRound, [&] { send.Bare(kMessagesPerRound); });
  PrintRow(name, "libcurl", Compare(kSendRounds, native, curl), "/s", kAtLeast);
  PrintRow(name, "bare socket", Compare(kSendRounds, native, bare), "/s", "");
}

void CompareHeaders(const std::string& where) {
  const ScratchDirectory store;
  FillMaildir(store.Path(), kHeaders);
  const MailHost host({"--store", store.Path().string(), "--no-lock"});
  Headers headers(host, kHeaders);
  const auto name = "LoadMessageHeaders of 10,000" + where;
  const auto native = PerSecond(kHeaders, [&] { headers.Native(); });
  const auto curl = PerSecond(kHeaders, [&] { headers.Curl(); });
  const auto bare = PerSecond(kHeaders, [&] { headers.Bare(); });
  PrintRow(name, "libcurl", Compare(kHeaderRounds, native, curl), "/s", kAtLeast);
  PrintRow(name, "bare socket", Compare(kHeaderRounds, native, bare), "/s", "");
}

void CompareSendOfToday(bool tls, const std::string& how) {
  const TodaysHost host({"--no-store"});
  const ScratchDirectory scratch;
  const auto place = host.Smtp(tls);
  NativeMail native(scratch.Path().string(), place.port, 0);
  native.UseExtensions(tls);
  native.SetMessage(kSender, kRecipient, Body());
  CurlSmtp curl(place, kSender, kRecipient);
  const auto message = FinishedMessage();
  const auto repeated = [](int count, const auto& work) {
    return PerSecond(static_cast<std::size_t>(count), [count, &work] {
      for (int done = 0; done < count; ++done) work();
    });
  };
  const auto send = [&] { native.Send(); };
  const auto curlSend = [&] { curl.Send(message); };
  PrintRow("Send of messages of 2 KiB, " + how, "libcurl",
           Compare(kSendRounds, repeated(kMessagesPerRound, send),
                   repeated(kMessagesPerRound, curlSend)),
           "/s", ">= 1.5");
  if (!tls) return;
  const auto connect = [&] { native.Connect(); };
  CurlSmtp curlConnect(place, kSender, kRecipient);
  const auto curlOnce = [&] { curlConnect.Connect(); };
  PrintRow("Connections over TLS", "libcurl",
           Compare(kSendRounds, repeated(kConnectionsPerRound, connect),
                   repeated(kConnectionsPerRound, curlOnce)),
           "/s", "");
}

void CompareHeadersOfToday(bool tls, const std::string& how) {
  const ScratchDirectory store;
  FillMaildir(store.Path(), kHeaders);
  const TodaysHost host({"--store", store.Path().string(), "--no-lock"});
  const ScratchDirectory scratch;
  const auto place = host.Pop(tls);
  NativeMail native(scratch.Path().string(), 0, place.port);
  native.UseExtensions(tls);
  native.SetMaximumHeaders(kHeaders);
  CurlPop curl(place);
  const auto load = PerSecond(kHeaders, [&] {
    if (native.LoadMessageHeaders() != kHeaders) throw std::runtime_error("headers are missing");
  });
  const auto curlLoad = PerSecond(kHeaders, [&] { curl.LoadHeaders(kHeaders); });
  PrintRow("LoadMessageHeaders of 10,000, " + how, "libcurl",
           Compare(kHeaderRounds, load, curlLoad), "/s", ">= 5");
}

void CompareAttachmentOverTls() {
  const TodaysHost host({"--no-store"});
  const ScratchDirectory scratch;
  const auto path = (scratch.Path() / "attached.bin").string();
  std::filesystem::resize_file((std::ofstream(path, std::ios::binary), path), kLargeFile);
  const auto place = host.Smtp(true);
  NativeMail native(scratch.Path().string(), place.port, 0);
  native.UseExtensions(true);
  native.SetMessage(kSender, kRecipient, Body());
  native.SetAttachment(path);
  CurlMime curl(place, kSender, kRecipient);
  const auto megabytes = kLargeFile / (1024 * 1024);
  const auto send = PerSecond(megabytes, [&] { native.Send(); });
  const auto curlSend = PerSecond(megabytes, [&] { curl.Send(Body(), path); });
  PrintRow("Send of 200 MiB attached, TLS", "libcurl", Compare(kFileRounds, send, curlSend),
           "MiB/s", ">= 1");
}

void CompareToday() {
  for (const bool tls : {false, true}) {
    const std::string how = tls ? "pipelined, TLS" : "pipelined";
    CompareSendOfToday(tls, how);
    CompareHeadersOfToday(tls, how);
  }
  CompareAttachmentOverTls();
}

// The most memory that this process has held, in KB.
double PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6));
  }
  throw std::runtime_error("the system does not tell the peak memory");
}

struct Growth {
  double microseconds = 0;  // per header
  double before = 0;        // KB
  double after = 0;
};

// In a process of its own (`--headers COUNT PORT FILE`), because a peak never goes down again.
// Writes a Growth into the file.
int LoadOnce(std::size_t count, std::uint16_t port, const char* result) {
  const ScratchDirectory scratch;
  NativeMail native(scratch.Path().string(), 0, port);
  native.SetMaximumHeaders(1);
  if (native.LoadMessageHeaders() != 1) return 1;
  const double before = PeakMemory();
  native.SetMaximumHeaders(count);
  std::vector<double> times;
  for (int round = 0; round < 5; ++round) {
    std::size_t loaded = 0;
    times.push_back(Seconds([&] { loaded = native.LoadMessageHeaders(); }));
    if (loaded != count) return 1;
  }
  std::ofstream(result) << SpreadOf(times).median * 1e6 / static_cast<double>(count) << ' '
                        << before << ' ' << PeakMemory();
  return 0;
}

Growth MeasureGrowth(std::size_t count, std::uint16_t port) {
  const ScratchDirectory scratch;
  const auto result = (scratch.Path() / "growth").string();
  RunProgram({(ProgramDirectory() / "bench_internet").string(), "--headers", std::to_string(count),
              std::to_string(port), result},
             "/dev/null");
  Growth growth;
  std::ifstream figures(result);
  if (!(figures >> growth.microseconds >> growth.before >> growth.after)) {
    throw std::runtime_error("the second process says nothing");
  }
  return growth;
}

void ShowGrowth() {
  const ScratchDirectory store;
  FillMaildir(store.Path(), kManyHeaders);
  const MailHost host({"--store", store.Path().string(), "--no-lock"});
  for (const auto count : {kFewHeaders, kHeaders, kManyHeaders}) {
    const auto growth = MeasureGrowth(count, host.PopPort());
    PrintRow("LoadMessageHeaders of " + FigureText(static_cast<double>(count)) + ", time",
             FigureText(growth.microseconds) + " us per header");
    PrintRow("LoadMessageHeaders of " + FigureText(static_cast<double>(count)) + ", peak memory",
             FigureText(growth.after / 1024) + " MB, of which " + FigureText(growth.before / 1024) +
                 " MB for a single one");
  }
}

// What each side says on the wire, by the log of the mail host: commands with their counts. What
// belongs to the login is left out.
std::map<std::string, int> Commands(const std::string& log, const std::string& protocol) {
  std::map<std::string, int> counts;
  std::ifstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    const auto prefix = protocol + " C: ";
    if (!line.starts_with(prefix)) continue;
    auto text = line.substr(prefix.size());
    if (text.starts_with('<')) text = "(text)";
    const auto word = text.substr(0, text.find(' '));
    for (const auto* const wanted : {"MAIL", "RCPT", "DATA", "(text)", ".", "TOP"}) {
      if (word == wanted) ++counts[word];
    }
  }
  return counts;
}

template <typename Work>
std::map<std::string, int> WireOf(const std::string& protocol, Work&& work) {
  const ScratchDirectory scratch;
  const auto log = (scratch.Path() / "log").string();
  FillMaildir(scratch.Path() / "store", 5);
  {
    const MailHost host(
        {"--store", (scratch.Path() / "store").string(), "--no-lock", "--log", log});
    work(host);
  }
  return Commands(log, protocol);
}

void CompareWire(const std::string& what, const std::map<std::string, int>& native,
                 const std::map<std::string, int>& curl) {
  std::string text;
  for (const auto& [word, count] : native) text += " " + word + " " + std::to_string(count);
  if (native.empty() || native != curl) throw std::runtime_error(what + ": the commands differ");
  PrintNote(what + ": both sides say" + text);
}

void ShowWire() {
  CompareWire("Send of 5 messages",
              WireOf("SMTP", [](const MailHost& host) { Send(host).Native(5); }),
              WireOf("SMTP", [](const MailHost& host) { Send(host).Curl(5); }));
  CompareWire("LoadMessageHeaders of 5",
              WireOf("POP", [](const MailHost& host) { Headers(host, 5).Native(); }),
              WireOf("POP", [](const MailHost& host) { Headers(host, 5).Curl(); }));
}

int Run(int count, char** arguments) {
  if (count == 5 && std::string_view(arguments[1]) == "--headers") {
    return LoadOnce(std::stoul(arguments[2]), static_cast<std::uint16_t>(std::stoul(arguments[3])),
                    arguments[4]);
  }
  if (count == 2 && std::string_view(arguments[1]) == "--today") {
    CompareToday();
    return 0;
  }
  ShowWire();
  CompareSend("");
  CompareHeaders("");
  {
    const OneProcessor one;
    CompareSend(", one processor");
    CompareHeaders(", one processor");
  }
  CompareToday();
  ShowGrowth();
  return 0;
}

}  // namespace
}  // namespace quillon::bench

int main(int count, char** arguments) {
  return quillon::bench::Main("bench_internet",
                              [&] { return quillon::bench::Run(count, arguments); });
}
