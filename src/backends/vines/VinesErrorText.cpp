#include "backends/vines/VinesErrorText.h"

#include <array>

#include "core/ErrorRow.h"
#include "ports/MailProvider.h"

namespace quillon {

namespace {

constexpr std::array kTexts{
    ErrorRow{provider::kMissing, "The provider library was not found, or cannot be loaded."},
    ErrorRow{provider::kOtherVersion, "The provider library does not fit this version."},
    ErrorRow{provider::kBroken, "The provider library failed."},
    ErrorRow{provider::kBadData, "The provider library gave data that cannot be."},
    ErrorRow{provider::kFileNotWritten, "Could not write attached file."},
};

}  // namespace

std::string VinesErrorText(std::int32_t number) {
  return FindErrorText(kTexts, number);
}

}  // namespace quillon
