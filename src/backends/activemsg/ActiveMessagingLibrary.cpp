#include "backends/activemsg/ActiveMessagingLibrary.h"

#include <charconv>
#include <string>
#include <system_error>

#include "backends/activemsg/ActiveMessagingNumber.h"
#include "core/AutomationValues.h"
#include "core/Text.h"

namespace quillon {

namespace {

constexpr const char* kObject = "MAPI.Session";
constexpr float kLeastVersion = 1.1F;

// Later libraries give a text of several numbers, as in "1.2.1", whose first two count.
float VersionOf(AutomationObject& session) {
  const auto version = session.Get("version");
  const auto* const text = std::get_if<std::string>(&version);
  if (text == nullptr) return static_cast<float>(RealOf(version));
  const auto digits = Trim(*text);
  float number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
  return number;
}

}  // namespace

void ActiveMessagingLibrary::TryMakeSession() {
  try {
    version_ = 0;
    session_ = objects_.Create(kObject);
    if (session_ != nullptr) version_ = VersionOf(*session_);
  } catch (const AutomationError&) {
    session_ = nullptr;
  }
}

bool ActiveMessagingLibrary::Available() {
  if (!probed_) {
    TryMakeSession();
    available_ = session_ != nullptr && version_ >= kLeastVersion;
    if (!available_) session_ = nullptr;
    probed_ = true;
  } else if (available_ && session_ == nullptr) {
    TryMakeSession();
  }
  return available_;
}

AutomationObjectPtr ActiveMessagingLibrary::Session() {
  Available();
  if (session_ == nullptr) session_ = objects_.Create(kObject);
  if (session_ == nullptr) {
    throw AutomationError(active_messaging::kFailure, "There is no session object.");
  }
  return session_;
}

}  // namespace quillon
