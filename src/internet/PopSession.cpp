#include "internet/PopSession.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>
#include <utility>

#include "core/Text.h"
#include "internet/PopReply.h"

namespace quillon {

namespace {

constexpr std::int32_t kInvalidResponse = 4;
constexpr std::int32_t kUnknownError = 6;
constexpr std::int32_t kNotPop = 8;
constexpr std::int32_t kPasswordRefused = 15;
constexpr std::int32_t kMaildropBusy = 16;
constexpr std::int32_t kQuitFailed = 20;
constexpr std::int32_t kConnectionLost = 29;
constexpr std::int32_t kOverflow = 30;

// The number of a refused command, in the order of Command. The greeting has a rule of its own.
constexpr std::array<std::int32_t, 9> kRefusals = {kNotPop, 14, kPasswordRefused, 23, 25, 24,
                                                   21,      17, kQuitFailed};

constexpr std::uint64_t kProgressBytes = 16U * 1024;  // of a message, between two words about it

// What one header or one list of identifiers may take: far more than any mailbox has, and little
// enough to hold.
constexpr std::uint64_t kMostListBytes = 64U * 1024 * 1024;

}  // namespace

void PopSession::BeginLogin(const PopSettings& settings) {
  Start(settings, Operation::Login);
}

void PopSession::BeginHeaders(const PopSettings& settings, const HeaderRequest& request,
                              HeaderSink& sink) {
  request_ = request;
  headers_ = &sink;
  Start(settings, Operation::Headers);
}

void PopSession::BeginMessage(const PopSettings& settings, std::uint32_t number,
                              MessageSink& sink) {
  number_ = number;
  message_ = &sink;
  Start(settings, Operation::Message);
}

void PopSession::BeginDelete(const PopSettings& settings, std::uint32_t number) {
  number_ = number;
  Start(settings, Operation::Delete);
}

void PopSession::BeginLogout() {
  if (!LoginStatus()) return FinishAndClose(kSessionSuccess);
  operation_ = Operation::Logout;
  Begin(settings_, false);
}

void PopSession::Start(const PopSettings& settings, Operation operation) {
  if (LoginStatus() && !settings.SameAccount(settings_)) FinishAndQuit(kSessionSuccess);
  settings_ = settings;
  operation_ = operation;
  lastError_.clear();
  Begin(settings);
}

void PopSession::OnReady() {
  switch (operation_) {
    case Operation::None:
    case Operation::Login:
      return Finish(kSessionSuccess);
    case Operation::Headers:
      if (request_.kind == HeaderRequest::Kind::Identifiers) {
        Status("Loading message identifiers...");
        return Send(Command::Uidl, "UIDL");
      }
      Status("Loading message headers...");
      if (request_.kind == HeaderRequest::Kind::All) return Send(Command::Stat, "STAT");
      number_ = request_.number - 1;
      lastNumber_ = request_.number;
      return NextHeader();
    case Operation::Message:
      Status("Loading message...");
      return Send(Command::Retr, "RETR " + std::to_string(number_));
    case Operation::Delete:
      Status("Deleting message...");
      return Send(Command::Dele, "DELE " + std::to_string(number_));
    case Operation::Logout:
      return Send(Command::Quit, "QUIT");
  }
}

void PopSession::OnDisconnected() {
  dataMode_ = inLongLine_ = false;
  deleted_.clear();
}

std::int32_t PopSession::LossNumber() const {
  if (operation_ != Operation::Logout) return kConnectionLost;
  return deleted_.empty() ? kSessionSuccess : kQuitFailed;
}

void PopSession::OnReplyLine(std::string_view line, bool complete) {
  if (!Active()) return Log("POP Bogus RX: ", line);
  Log("", line);
  if (dataMode_) return OnData(line, complete);
  if (std::exchange(inLongLine_, !complete)) return;
  const auto reply = ParsePopReply(line);
  if (reply.positive) return OnPositive(reply.text);
  OnNegative(reply.text, line);
}

void PopSession::OnPositive(std::string_view text) {
  ReplyCame();
  switch (lastCommand_) {
    case Command::None:
      return Send(Command::User, "USER " + settings_.loginName);
    case Command::User:
      return Send(Command::Pass, "PASS " + settings_.password, "PASS ****");
    case Command::Pass:
      Status("Connected to server...");
      LoggedIn();
      return OnReady();
    case Command::Stat:
      return OnStatistics(text);
    case Command::Uidl:
    case Command::Top:
    case Command::Retr:
      dataMode_ = inHeader_ = true;
      hasAttachments_ = false;
      dataBytes_ = nextProgress_ = 0;
      dataSize_ = TakeNumber(text).value_or(0);
      if (lastCommand_ == Command::Retr) Status("Receiving message...");
      return AwaitReply();
    case Command::Dele:
      deleted_.insert(number_);
      Status("Message deleted successfully.");
      return Finish(kSessionSuccess);
    case Command::Quit:
      return FinishAndClose(kSessionSuccess);
  }
}

void PopSession::OnNegative(std::string_view text, std::string_view line) {
  lastError_ = text;
  const auto number = kRefusals[static_cast<std::size_t>(lastCommand_)];
  switch (lastCommand_) {
    case Command::None:
      Log("The server port is not a POP server.  Here is the server response:", line);
      return FinishAndQuit(number);
    case Command::User:
    case Command::Pass: {
      Status("Failed to Logon to POP server.");
      const bool busy = UpperAscii(line).find("BUSY") != std::string::npos;
      return FinishAndQuit(lastCommand_ == Command::Pass && busy ? kMaildropBusy : number);
    }
    case Command::Quit:
      return FinishAndClose(number);
    default:
      return Finish(number);
  }
}

void PopSession::OnStatistics(std::string_view text) {
  const auto count = TakeNumber(text);
  if (!count) {
    lastError_ = text;
    return FinishAndQuit(kInvalidResponse);
  }
  // What was deleted in this session is no longer counted, and keeps its number.
  const auto last = *count + deleted_.size();
  lastNumber_ = std::min<std::uint64_t>(last, std::numeric_limits<std::uint32_t>::max() - 1);
  number_ = 0;
  if (*count == 0) {
    Status("Mailbox is empty.");
    return Finish(kSessionSuccess);
  }
  NextHeader();
}

void PopSession::NextHeader() {
  do {
    ++number_;
  } while (deleted_.contains(number_));
  if (number_ > lastNumber_) {
    Status("Headers loaded successfully.");
    return Finish(kSessionSuccess);
  }
  std::array<char, 32> line{};
  const int size =
      std::snprintf(line.data(), line.size(), "TOP %lu 0", static_cast<unsigned long>(number_));
  Send(Command::Top, {line.data(), static_cast<std::size_t>(size)});
}

void PopSession::OnData(std::string_view line, bool complete) {
  const bool lineStart = !std::exchange(inLongLine_, !complete);
  if (lineStart && complete && line == ".") return OnDataEnd();
  if (lineStart && line.starts_with('.')) line.remove_prefix(1);
  dataBytes_ += line.size() + 2;
  if (lastCommand_ == Command::Retr) return OnMessageData(line, complete);
  if (dataBytes_ > kMostListBytes) return FinishAndClose(kOverflow);
  if (lastCommand_ == Command::Uidl) {
    if (lineStart) OnIdentifierData(line);
    return;
  }
  if (lineStart && line.empty()) inHeader_ = false;
  if (inHeader_ && !headers_->OnHeaderLine(number_, line, complete)) FinishAndClose(kOverflow);
}

// Once for what came together: a message may have millions of lines.
void PopSession::OnLinesRead() {
  if (dataMode_) AwaitReply();
}

void PopSession::OnMessageData(std::string_view line, bool complete) {
  if (const auto number = message_->OnMessageLine(line, complete); number != 0) {
    return FinishAndClose(number);
  }
  if (dataBytes_ >= nextProgress_) {
    nextProgress_ = dataBytes_ + kProgressBytes;
    Progress(dataBytes_, dataSize_, number_);
  }
  if (!hasAttachments_ && message_->InAttachment()) {
    hasAttachments_ = true;
    Status("Receiving attachments...");
  }
}

void PopSession::OnIdentifierData(std::string_view line) {
  const auto number = TakeNumber(line);
  if (!number || *number == 0 || *number > std::numeric_limits<std::uint32_t>::max()) return;
  headers_->OnIdentifier(static_cast<std::uint32_t>(*number), line);
}

void PopSession::OnDataEnd() {
  dataMode_ = false;
  ReplyCame();
  switch (lastCommand_) {
    case Command::Top:
      Progress(number_, lastNumber_, number_);
      if (headers_->OnHeaderEnd(number_)) {
        NextHeader();
      } else {
        Status("Headers loaded successfully.");
        Finish(kSessionSuccess);
      }
      return headers_->OnNextRequested();
    case Command::Uidl:
      Status("Identifiers loaded successfully.");
      return Finish(kSessionSuccess);
    case Command::Retr:
      return OnMessageEnd();
    default:
      return FinishAndClose(kUnknownError);
  }
}

void PopSession::OnMessageEnd() {
  if (hasAttachments_) Status("Decoding attachments...");
  if (const auto number = message_->OnMessageEnd(); number != 0) return Finish(number);
  Status("Message loaded successfully.");
  Finish(kSessionSuccess);
}

void PopSession::Send(Command command, std::string_view line, std::string_view logged) {
  lastCommand_ = command;
  SendCommand(line, logged);
}

}  // namespace quillon
