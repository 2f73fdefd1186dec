#include "server/StartUp.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "core/Text.h"
#include "core/Value.h"
#include "mail/MailSystemId.h"
#include "server/Property.h"

namespace quillon {

namespace {

constexpr std::size_t kMostItems = 20;
constexpr int kFailed = 1;
constexpr std::int16_t kInterfaceLibrary = 41;  // of GetInterfaceString

constexpr const char* kTitle = "Quillon OLE Server";
constexpr const char* kNoMailSystem = "No mail system was detected on workstation.";
constexpr const char* kNoActiveMessaging =
    "You must install Active Messaging to be able to send mail via your Microsoft mail system.";
constexpr const char* kTooManyItems =
    "The command line has more than 20 items. Those behind the twentieth are ignored.";

// The number that the text begins with, 0 when it begins with none.
double LeadingNumber(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  if (text.find_first_not_of("-.0123456789") == 0) return 0;  // "infinity" is none
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc::result_out_of_range ? HUGE_VAL : number;
}

bool IsTrue(std::string_view value) {
  const char first = value.empty() ? '\0' : UpperAscii(value.front());
  return first == 'T' || first == 'Y' || first == '-';
}

struct Assignment {
  std::string key;  // upper case
  std::string_view value;
};

// Nothing for an item that says nothing.
std::optional<Assignment> AssignmentOf(std::string_view item) {
  item = Trim(item);
  const auto sign = item.find('=');
  if (sign == std::string_view::npos || sign + 1 == item.size()) return std::nullopt;
  return Assignment{UpperAscii(Trim(item.substr(0, sign))), Trim(item.substr(sign + 1))};
}

struct TextKey {
  std::string_view key;
  Property property;
};

constexpr std::array<TextKey, 3> kTextKeys{{
    {"LN", Property::loginName},
    {"PW", Property::Password},
    {"PO", Property::postOffice},
}};

}  // namespace

StartUp::StartUp(MakeServer make, MessageBoxPort& messageBox)
    : make_(std::move(make)), messageBox_(messageBox) {}

Server& StartUp::TheServer() {
  if (server_ == nullptr) server_ = make_();
  return *server_;
}

void StartUp::Tell(const std::string& text, MessageBoxPort::Icon icon) {
  messageBox_.Show(kTitle, text, icon);
}

int StartUp::Run(std::string_view commandLine) {
  commandLine = Trim(commandLine);
  if (commandLine.empty()) return 0;
  int status = 0;
  try {
    if (Prepare(commandLine)) {
      if (login_) TheServer().Login();
      if (showDialog_) TheServer().ShowMailDialog();
    } else {
      status = kFailed;
    }
  } catch (const std::exception& failure) {
    Tell(failure.what(), MessageBoxPort::Icon::Critical);
    status = kFailed;
  }
  if (status != 0 || !keepRunning_) Release();
  return status;
}

bool StartUp::Prepare(std::string_view commandLine) {
  for (const auto& item : ItemsOf(commandLine)) CarryOut(item);
  if (!systemGiven_) Detect();
  if (ToInt16(TheServer().Get(Property::mailSystem)) != mail_system::kNone) return true;
  Tell(kNoMailSystem, MessageBoxPort::Icon::Critical);
  return false;
}

std::vector<std::string> StartUp::ItemsOf(std::string_view commandLine) {
  auto items = Split(commandLine, ",");
  if (items.size() > kMostItems) {
    items.resize(kMostItems);
    Tell(kTooManyItems, MessageBoxPort::Icon::Warning);
  }
  return items;
}

void StartUp::CarryOut(std::string_view item) {
  const auto assignment = AssignmentOf(item);
  if (!assignment) return;
  const auto& [key, value] = *assignment;
  for (const auto& row : kTextKeys) {
    if (row.key == key) TheServer().Put(row.property, std::string(value));
  }
  if (key == "MS") {
    TheServer().Put(Property::mailSystem, LeadingNumber(value));
    systemGiven_ = true;
  } else if (key == "LI") {
    login_ = IsTrue(value);
  } else if (key == "SD") {
    showDialog_ = IsTrue(value);
  } else if (key == "KR") {
    keepRunning_ = IsTrue(value);
  }
}

// Microsoft's mail programs are better served by Active Messaging.
void StartUp::Detect() {
  Server& server = TheServer();
  server.SetNativeSystem();
  if (ToInt16(server.Get(Property::mailSystem)) != mail_system::kSimpleMapi) return;
  const auto library = server.GetInterfaceString(kInterfaceLibrary);
  if (library.find("Microsoft") == std::string::npos) return;
  if (server.QueryMailSystem(mail_system::kActiveMessaging) != kFalse) {
    server.Put(Property::mailSystem, mail_system::kActiveMessaging);
  } else {
    Tell(kNoActiveMessaging, MessageBoxPort::Icon::Critical);
  }
}

}  // namespace quillon
