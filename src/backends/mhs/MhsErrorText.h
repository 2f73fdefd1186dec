// The numbers of failures with mail in files, which are this back end's own, and their texts.
#pragma once

#include <cstdint>
#include <string>

namespace quillon {

// Away from the codes of the server, whose texts would stand for them.
namespace mhs {

inline constexpr std::int32_t kCannotCreate = 601;
inline constexpr std::int32_t kCannotWrite = 602;
inline constexpr std::int32_t kNoAttachment = 603;
inline constexpr std::int32_t kAttachmentNotSaved = 604;
inline constexpr std::int32_t kMessageGone = 605;
inline constexpr std::int32_t kCannotRead = 606;
inline constexpr std::int32_t kCannotDelete = 607;
inline constexpr std::int32_t kParcelNotDeleted = 608;
inline constexpr std::int32_t kBadAddress = 609;
inline constexpr std::int32_t kTooLong = 610;
inline constexpr std::int32_t kNotMarked = 611;
inline constexpr std::int32_t kUnknownUser = 612;
inline constexpr std::int32_t kBookNotRead = 613;

}  // namespace mhs

// Empty for a number without a text.
std::string MhsErrorText(std::int32_t number);

}  // namespace quillon
