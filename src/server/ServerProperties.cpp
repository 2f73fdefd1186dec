// Get and Put of the plain properties.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "codec/TextEncoder.h"
#include "core/Text.h"
#include "internet/ProtocolLog.h"
#include "net/CertificateCheck.h"
#include "ports/FileSystem.h"
#include "ports/Workstation.h"
#include "sasl/Choice.h"
#include "server/ErrorTable.h"
#include "server/MailSystems.h"
#include "server/MessageItems.h"
#include "server/NamedDateFormat.h"
#include "server/PropertyTable.h"
#include "server/ReservedCommand.h"
#include "server/Server.h"

namespace quillon {

namespace {

constexpr std::int16_t kServerType = 32;
constexpr std::size_t kZipPasswordLimit = 65;
constexpr const char* kProfilesKey =
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

[[noreturn]] void Reject(std::string text = {}) {
  throw ServerError(error_code::kInvalidValue, std::move(text));
}

// A number for a range check: what is too large for any range is rejected by the check, not by the
// conversion.
double RangeNumber(const Value& value) {
  try {
    return std::nearbyint(ToDouble(value));
  } catch (const ConversionError& error) {
    if (error.Why() == ConversionError::Reason::Overflow) Reject();
    throw;
  }
}

double CheckedNumber(const PropertyRow& row, const Value& value) {
  const double number = RangeNumber(value);
  if (row.rule == PropertyRule::Flag) {
    if (number != kTrue && number != kFalse) Reject();
  } else if (!(number >= row.lowest && number <= row.highest)) {
    Reject();
  }
  return number;
}

Value ReadVariable(const PropertyVariable& variable) {
  return std::visit(
      [](auto held) -> Value {
        using Held = decltype(held);
        if constexpr (std::is_same_v<Held, std::monostate>) {
          return {};
        } else if constexpr (std::is_same_v<Held, std::uint16_t*>) {
          // A port up to 32767 is a short, as documented; one above still reads as the number that
          // was put.
          if (*held <= 0x7FFF) return static_cast<std::int16_t>(*held);
          return static_cast<std::int32_t>(*held);
        } else if constexpr (std::is_same_v<Held, std::optional<std::string>*>) {
          return held->value_or(std::string());
        } else if constexpr (std::is_same_v<Held, std::optional<std::int16_t>*>) {
          return held->value_or(std::int16_t{0});
        } else {
          return *held;
        }
      },
      variable);
}

void WriteVariable(const PropertyVariable& variable, const PropertyRow& row, const Value& value) {
  if (auto* const* text = std::get_if<std::string*>(&variable)) {
    **text = ToText(value);
  } else if (auto* const* number = std::get_if<std::int16_t*>(&variable)) {
    **number = static_cast<std::int16_t>(CheckedNumber(row, value));
  } else if (auto* const* longNumber = std::get_if<std::int32_t*>(&variable)) {
    **longNumber = row.rule == PropertyRule::Number
                       ? ToInt32(value)
                       : static_cast<std::int32_t>(CheckedNumber(row, value));
  } else if (auto* const* ownText = std::get_if<std::optional<std::string>*>(&variable)) {
    **ownText = ToText(value);
  } else if (auto* const* ownNumber = std::get_if<std::optional<std::int16_t>*>(&variable)) {
    **ownNumber = static_cast<std::int16_t>(CheckedNumber(row, value));
  }
}

// A port is a short; the upper half may be given as itself or as the negative short of the same
// bits.
std::uint16_t PortNumber(const Value& value) {
  const std::int32_t number = ToInt32(value);
  if (number < -0x8000 || number > 0xFFFF) {
    throw ConversionError(ConversionError::Reason::Overflow);
  }
  return static_cast<std::uint16_t>(number);
}

}  // namespace

Value Server::Get(Property property) {
  const auto& row = RowOf(property);
  return frame_.Run(row.name, MemberKind::Property, [&]() -> Value {
    switch (property) {
      case Property::ServerVersion:
        return environment_.product.version;
      case Property::ServerPath:
        return environment_.product.directory;
      case Property::ServerType:
        return kServerType;
      case Property::messageCount:
        return static_cast<std::int32_t>(environment_.shared.headers.size());
      case Property::UnreadCount:
        return UnreadCount();
      case Property::undocumented1:
        return commandResult_;
      case Property::HTMLMessage:
        state_.wantsHtml = true;
        return HtmlOf(environment_.shared.message);
      case Property::dateFormat:
        return DateFormatValue(state_.dateFormat);
      case Property::sessionHandle:
      case Property::SessionHandleEx:
        return SessionHandle();
      case Property::DefaultProfile:
        return environment_.workstation.UserRegistryText(kProfilesKey, "DefaultProfile");
      default:
        return ReadVariable(VariableOf(row, state_, environment_.shared));
    }
  });
}

void Server::Put(Property property, const Value& value) {
  const auto& row = RowOf(property);
  frame_.Run(row.name, MemberKind::Property, [&] {
    if (row.rule == PropertyRule::Special) {
      PutSpecial(property, value);
      return;
    }
    WriteVariable(VariableOf(row, state_, environment_.shared), row, value);
    if (property == Property::ErrorDisplay) {
      environment_.shared.errorDisplay = state_.errorDisplay;
      environment_.mailSystems.SetErrorDisplay(state_.errorDisplay == kTrue);
    } else if (property == Property::InternetLogging) {
      SwitchLog();
    }
  });
}

void Server::PutSpecial(Property property, const Value& value) {
  switch (property) {
    case Property::mailSystem:
      dispatch_.SelectSystem(
          static_cast<std::int32_t>(std::min(std::max(RangeNumber(value), -1.0), 1000.0)));
      break;
    case Property::messageIndex: {
      const double index = RangeNumber(value);
      if (index < 0 || index >= static_cast<double>(environment_.shared.headers.size())) Reject();
      state_.messageIndex = static_cast<std::int32_t>(index);
      break;
    }
    case Property::dateFormat:
      state_.dateFormat = DateFormatFromValue(value);
      break;
    case Property::recipientDelimiter: {
      auto text = ToText(value);
      if (Utf16Length(text) != 1) Reject();
      state_.recipientDelimiter = std::move(text);
      break;
    }
    case Property::SMTPPort:
      environment_.shared.internet.smtpPort = PortNumber(value);
      break;
    case Property::POPPort:
      environment_.shared.internet.popPort = PortNumber(value);
      break;
    case Property::UTCOffset: {
      const auto offset = static_cast<float>(ToDouble(value));
      if (offset != kUtcOffsetNotSet && !(offset >= -24.0F && offset <= 24.0F)) Reject();
      state_.utcOffset = offset;
      break;
    }
    case Property::SessionHandleEx:
      PutSessionHandle(ToInt32(value));
      break;
    case Property::AttachmentDirectory: {
      auto directory = ToText(value);
      if (!directory.empty() && !environment_.files.DirectoryExists(directory)) {
        Reject("Directory does not exist.");
      }
      state_.attachmentDirectory = std::move(directory);
      break;
    }
    case Property::ZipPassword: {
      auto password = ToText(value);
      if (Utf16Length(password) > kZipPasswordLimit) {
        Reject("Password length exceeds maximum length of 65 characters.");
      }
      state_.zipPassword = std::move(password);
      break;
    }
    case Property::Authentication: {
      auto names = ToText(value);
      if (!ReadMechanismNames(names)) Reject();
      state_.access.authentication = std::move(names);
      break;
    }
    case Property::PinnedCertificate: {
      auto pin = ToText(value);
      if (!pin.empty() && !ReadPin(pin)) Reject();
      state_.access.pinnedCertificate = std::move(pin);
      break;
    }
    case Property::Charset: {
      auto name = TrimmedCopy(ToText(value));
      if (!name.empty() && !TextEncoder::Knows(name)) {
        Reject("There is no character set \"" + name + "\".");
      }
      state_.access.charset = std::move(name);
      break;
    }
    case Property::HTMLMessage:
      state_.wantsHtml = true;
      environment_.shared.message.html = ToText(value);
      environment_.shared.message.receivedHtml.clear();
      break;
    case Property::undocumented1:
      commandResult_ = RunReservedCommand(*this, environment_, ToText(value));
      break;
    default:
      Reject();
  }
}

std::int32_t Server::UnreadCount() {
  std::int32_t count = 0;
  dispatch_.Run(
      [&](BackEnd& backEnd, MailRequest& request) { return backEnd.UnreadCount(request, count); });
  return count;
}

std::int32_t Server::SessionHandle() {
  if (environment_.mailSystems.BackEndOf(state_.mailSystem) != nullptr) {
    dispatch_.Run([&](BackEnd& backEnd, MailRequest& request) {
      return backEnd.GetSessionHandle(request, state_.session.handle);
    });
  }
  return state_.session.handle;
}

void Server::PutSessionHandle(std::int32_t handle) {
  if (state_.mailSystem == mail_system::kNone) {
    Reject("Could not set session handle, MailSystem property must be set first.");
  }
  try {
    dispatch_.Run([&](BackEnd& backEnd, MailRequest& request) {
      return backEnd.SetSessionHandle(request, handle);
    });
  } catch (const ServerError&) {
    Reject("Could not set session handle.");
  }
  state_.session = {handle, handle != 0, handle != 0};
}

void Server::SwitchLog() {
  if (state_.internetLogging == kTrue) {
    environment_.protocolLog.Start();
  } else {
    environment_.protocolLog.Stop();
  }
}

}  // namespace quillon
