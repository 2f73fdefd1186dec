#include "server/ReservedCommand.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "codec/BlockIo.h"
#include "codec/UUCode.h"
#include "core/ServerError.h"
#include "core/Text.h"
#include "mail/AsynchNotifier.h"
#include "mail/MailSystemKeyword.h"
#include "ports/FileSystem.h"
#include "server/Environment.h"
#include "server/ErrorTable.h"
#include "server/Server.h"

namespace quillon {

namespace {

using Arguments = std::vector<std::string>;

struct Context {
  Server& server;
  Environment& environment;

  FileSystem& Files() const { return environment.files; }
  ProcessSwitches& Switches() const { return environment.shared.switches; }
};

[[noreturn]] void Malformed() {
  throw ServerError(error_code::kInvalidValue);
}

void RequireFile(const Context& context, const std::string& path) {
  if (path.empty()) throw ServerError(error_code::kFileNotSpecified);
  if (!context.Files().FileExists(path)) throw ServerError(error_code::kNoFile);
}

void RequireDirectory(const Context& context, const std::string& path) {
  if (context.Files().DirectoryExists(path)) return;
  throw ServerError(error_code::kInvalidValue, "Directory does not exist.");
}

void RequireSuccess(bool success, std::int32_t code = error_code::kFileAccess) {
  if (!success) throw ServerError(code);
}

bool ReadSwitch(const std::string& text) {
  const Value value(text);
  if (!IsNumeric(value)) Malformed();
  const double number = ToDouble(value);
  if (number != kTrue && number != kFalse) Malformed();
  return number == kTrue;
}

void TempDir(const Context& context, const Arguments& arguments) {
  if (!arguments[0].empty()) RequireDirectory(context, arguments[0]);
  context.Switches().temporaryDirectory = arguments[0];
}

void ReplyTo(const Context& context, const Arguments& arguments) {
  context.environment.shared.message.replyTo = arguments[0];
}

void OnlyRecipient(const Context& context, const Arguments& arguments) {
  context.Switches().envelopeRecipient = TrimmedCopy(arguments[0]);
}

std::int32_t ReadNumber(const std::string& text, std::int32_t least) {
  const Value value(text);
  if (!IsNumeric(value)) Malformed();
  std::int32_t number = least;
  try {
    number = ToInt32(value);
  } catch (const ConversionError&) {
    Malformed();
  }
  if (number < least) Malformed();
  return number;
}

void MessageLines(const Context& context, const Arguments& arguments) {
  context.Switches().maximumBodyLines = ReadNumber(arguments[0], 0);
}

void MailService(const Context& context, const Arguments& arguments) {
  constexpr std::array<std::string_view, 4> kNone{"UNKNOWN", "AUTO-DETECT", "AUTODETECT", "0"};
  const auto keyword = Trim(arguments[0]);
  const auto system = MailSystemFromKeyword(keyword);
  const bool none = std::any_of(kNone.begin(), kNone.end(),
                                [&](auto text) { return EqualsIgnoreCase(text, keyword); });
  if (system == mail_system::kNone && !none) Malformed();
  context.server.Put(Property::mailSystem, Value(system));
}

void CharacterSet(const Context& context, const Arguments& arguments) {
  // A token: what stands unharmed between the quotes of a Content-Type parameter (RFC 2045,
  // section 5.1).
  const auto name = TrimmedCopy(arguments[0]);
  const bool token = !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return c > ' ' && c <= '~' &&
           std::string_view("()<>@,;:\\\"/[]?=").find(c) == std::string_view::npos;
  });
  if (!token) Malformed();
  context.environment.shared.internet.characterSet = name;
}

void Greeting(const Context& context, const Arguments& arguments) {
  context.Switches().greetWithHelo = ReadSwitch(arguments[0]);
}

void KeepTemporaryFiles(const Context& context, const Arguments& arguments) {
  context.Switches().keepTemporaryFiles = ReadSwitch(arguments[0]);
}

void BlockSize(const Context& context, const Arguments& arguments) {
  context.Switches().blockSize = ReadNumber(arguments[0], 0);
}

void SingleHeader(const Context& context, const Arguments& arguments) {
  context.Switches().singleHeader = ReadNumber(arguments[0], 0);
}

void Tags(const Context& context, const Arguments& arguments) {
  context.environment.notifier.SetTagMode(ReadSwitch(arguments[0]));
}

void CopyFileTo(const Context& context, const Arguments& arguments) {
  RequireFile(context, arguments[0]);
  if (arguments[1].empty()) throw ServerError(error_code::kFileNotSpecified);
  RequireSuccess(context.Files().CopyWholeFile(arguments[0], arguments[1]));
}

void RemoveOneFile(const Context& context, const Arguments& arguments) {
  RequireFile(context, arguments[0]);
  RequireSuccess(context.Files().RemoveFile(arguments[0]));
}

void MakeOneDirectory(const Context& context, const Arguments& arguments) {
  if (arguments[0].empty()) Malformed();
  RequireSuccess(context.Files().MakeDirectory(arguments[0]));
}

void RemoveOneDirectory(const Context& context, const Arguments& arguments) {
  RequireDirectory(context, arguments[0]);
  RequireSuccess(context.Files().RemoveEmptyDirectory(arguments[0]));
}

// Codecs work from one file to another; both in one would destroy the input.
void RequireOther(const Context& context, const std::string& from, const std::string& to) {
  RequireFile(context, from);
  if (to.empty()) throw ServerError(error_code::kFileNotSpecified);
  if (SamePath(context.Files(), from, to)) Malformed();
}

void RequirePair(const Context& context, const Arguments& arguments) {
  RequireOther(context, arguments[0], arguments[1]);
}

void Base64Encode(const Context& context, const Arguments& arguments) {
  RequirePair(context, arguments);
  ShortBool result = kFalse;
  UUCode(context.Files()).Base64EncodeFile(arguments[0], arguments[1], result);
  RequireSuccess(result == kTrue, error_code::kEncoding);
}

void Base64Decode(const Context& context, const Arguments& arguments) {
  RequirePair(context, arguments);
  ShortBool result = kFalse;
  UUCode(context.Files()).Base64DecodeFile(arguments[0], arguments[1], result);
  RequireSuccess(result == kTrue);
}

// One line of a split file, with its line end.
constexpr std::int32_t kLeastPartSize = 63;

void UuSplit(const Context& context, const Arguments& arguments) {
  RequireFile(context, arguments[0]);
  auto directory = arguments[1];
  RequireDirectory(context, directory);
  ShortBool result = kFalse;
  UUCode(context.Files())
      .UUEncodeFiles(arguments[0], directory, ReadNumber(arguments[2], kLeastPartSize), result);
  RequireSuccess(result == kTrue, error_code::kEncoding);
}

// One file, or the parts of one; the last argument is what comes of them.
void UuDecode(const Context& context, const Arguments& arguments) {
  const auto& output = arguments.back();
  const Arguments inputs(arguments.begin(), arguments.end() - 1);
  for (const auto& input : inputs) RequireOther(context, input, output);
  ShortBool result = kFalse;
  if (inputs.size() == 1) {
    UUCode(context.Files()).UUDecodeFile(inputs[0], output, result);
  } else {
    UUCode(context.Files()).UUDecodeFiles(inputs, output, result);
  }
  RequireSuccess(result == kTrue);
}

void UuEncode(const Context& context, const Arguments& arguments) {
  if (arguments.size() == 3) return UuSplit(context, arguments);
  RequirePair(context, arguments);
  ShortBool result = kFalse;
  UUCode(context.Files())
      .UUEncodeFile(arguments[0], arguments[1], UUCode::kGraveAccentStyle, result);
  RequireSuccess(result == kTrue, error_code::kEncoding);
}

void QpDecode(const Context& context, const Arguments& arguments) {
  RequirePair(context, arguments);
  ShortBool pending = kFalse;
  ShortBool result = kFalse;
  UUCode(context.Files()).QPDecodeFile(arguments[0], arguments[1], pending, result);
  RequireSuccess(result == kTrue);
}

constexpr std::size_t kAnyNumber = static_cast<std::size_t>(-1);

struct Command {
  std::string_view word;
  std::size_t leastArguments;
  std::size_t mostArguments;
  void (*run)(const Context&, const Arguments&);
};

constexpr std::array kCommands{
    Command{"TEMPDIR", 1, 1, TempDir},
    Command{"REPLY-TO", 1, 1, ReplyTo},
    Command{"ONLY_RECIP", 1, 1, OnlyRecipient},
    Command{"MSG_LINES", 1, 1, MessageLines},
    Command{"MAIL_SERVICE", 1, 1, MailService},
    Command{"CHARSET", 1, 1, CharacterSet},
    Command{"COPY_FILE", 2, 2, CopyFileTo},
    Command{"DELETE_FILE", 1, 1, RemoveOneFile},
    Command{"CREATE_DIRECTORY", 1, 1, MakeOneDirectory},
    Command{"DELETE_DIRECTORY", 1, 1, RemoveOneDirectory},
    Command{"BASE64_ENCODE_FILE", 2, 2, Base64Encode},
    Command{"BASE64_DECODE_FILE", 2, 2, Base64Decode},
    Command{"UU_ENCODE_FILE", 2, 3, UuEncode},
    Command{"UU_DECODE_FILE", 2, kAnyNumber, UuDecode},
    Command{"QP_DECODE_FILE", 2, 2, QpDecode},
    Command{"HELO", 1, 1, Greeting},
    Command{"KEEP_TEMP", 1, 1, KeepTemporaryFiles},
    Command{"BLOCK_SIZE", 1, 1, BlockSize},
    Command{"SINGLE_HEADER", 1, 1, SingleHeader},
    Command{"ASYNCH_TAGS", 1, 1, Tags},
};

}  // namespace

Value RunReservedCommand(Server& server, Environment& environment, const std::string& text) {
  const auto trimmed = Trim(text);
  if (!trimmed.starts_with('|')) Malformed();
  auto pieces = Split(trimmed.substr(1), "|");
  if (pieces.size() < 2) Malformed();  // no "|" behind the word
  const auto word = TrimmedCopy(pieces[0]);
  const Arguments arguments(pieces.begin() + 1, pieces.end());
  const auto* const command =
      std::find_if(kCommands.begin(), kCommands.end(),
                   [&](const Command& row) { return EqualsIgnoreCase(row.word, word); });
  if (command == kCommands.end() || arguments.size() < command->leastArguments ||
      arguments.size() > command->mostArguments) {
    Malformed();
  }
  command->run({server, environment}, arguments);
  return {kTrue};
}

}  // namespace quillon
