#include "dialer/RasErrorText.h"

namespace quillon {
namespace {

constexpr const char* kCallFailed =
    "Call To RasGetErrorString Failed. Error Retrieving The Error String!!!";
constexpr const char* kNotSupported = "Function Is Not Supported On This Version of Windows.";
constexpr const char* kUnexpected =
    "Unexpected Error. See WIN32 SDK More Information On This Error Number!!!";
constexpr const char* kNothingKnown =
    "Undetermined error, RAS could not provide further information.";

// By the number that the service failed with when it was asked for the text.
const char* TextInstead(std::uint32_t failure) {
  switch (failure) {
    case ras::kOutOfMemory:
    case ras::kBufferTooSmall:  // the number has a text, which could not be handed over
      return kCallFailed;
    case ras::kInvalidFunction:
    case ras::kNotSupported:
    case ras::kNotImplemented:
      return kNotSupported;
    case ras::kSuccess:  // and an empty text
    case ras::kInvalidParameter:
    case ras::kNoNumber:  // the number is none of the service's
      return kNothingKnown;
    default:
      return kUnexpected;
  }
}

}  // namespace

std::string RasErrorText(Ras& library, std::uint32_t number) {
  std::string text;
  const auto failure = library.ErrorString(number, text);
  return failure == ras::kSuccess && !text.empty() ? text : TextInstead(failure);
}

}  // namespace quillon
