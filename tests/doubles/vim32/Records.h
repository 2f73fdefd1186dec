// VIM 1.00 as C programs have it in 32 bits: the records and the numbers that this library knows.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vim32 {

using Bool = std::uint16_t;
using Word = std::uint16_t;
using Handle = std::uint32_t;  // a pointer, to its owner

enum Status : std::uint32_t {
  kSuccess = 0,
  kFailure = 1,
  kAllParamsRequired = 3,
  kAttachmentNotFound = 4,
  kBadParam = 5,
  kBufTooSmall = 6,
  kConvNotSupported = 7,
  kInvalidObject = 10,
  kInvalidPassword = 11,
  kInvalidSelector = 12,
  kNameNotFound = 15,
  kNoDefault = 18,
  kNoMatch = 19,
  kNoSuchAttribute = 21,
  kOpenFailure = 22,
  kPassRequired = 23,
  kReadFailure = 24,
  kUnsupType = 25,
  kUnsupVersion = 26,
  kWriteFailure = 27,
  kNoRecipients = 256,
  kRecipientNotFound = 257,
  kRecipientNotUnique = 258,
  kInvalidMessage = 260,
};

enum Selector : std::uint32_t {
  kSelAddress = 1,
  kSelAttach = 6,
  kSelBcc = 9,
  kSelCc = 10,
  kSelCcMail = 11,
  kSelClass = 13,
  kSelCp1252 = 16,
  kSelDate = 19,
  kSelDeliveryReport = 21,
  kSelEntity = 26,
  kSelFromName = 35,
  kSelFull = 36,
  kSelGroup = 38,
  kSelLocal = 45,
  kSelName = 53,
  kSelNative = 55,
  kSelNoFilter = 58,
  kSelNondeliveryReport = 60,
  kSelNotePart = 62,
  kSelPartial = 67,
  kSelPriority = 71,
  kSelProduct = 72,
  kSelRecipient = 75,
  kSelRef = 76,
  kSelReturnReceipt = 79,
  kSelSave = 81,
  kSelSensitivity = 82,
  kSelSent = 83,
  kSelSubject = 91,
  kSelTo = 97,
  kSelType = 98,
};

inline constexpr std::uint32_t kVersion = 100;
inline constexpr std::uint32_t kUnreadOnly = 1;
inline constexpr std::uint32_t kUnknownDate = 0xFFFFFFFF;

// Passed by value, whatever it refers to; with its address where it is the place of an enumeration.
struct Ref {
  std::uint32_t first;
  std::uint32_t second;
};

struct DistinguishedName {
  std::uint32_t type;
  char book[256];
  char value[1024];
};

struct Address {
  std::uint32_t type;
  char value[1024];
};

struct RecipientRecord {
  std::uint32_t type;
  DistinguishedName name;
  Address address;
};

struct AttrDesc {
  std::uint32_t attribute;
  std::uint32_t
      size;  // of the value's place; a call that gives several values wants as many places
  void* buffer;
};

struct ItemDesc {
  std::uint32_t itemClass;
  char type[64];
  char name[256];
  char path[256];
  std::uint32_t size;
  Ref ref;
};

struct BuffFileDesc {
  std::uint32_t size;
  void* buffer;
  std::uint32_t offset;
  const char* fileName;
};

struct Date {
  std::uint32_t zone;
  std::uint32_t date;  // year, month and day from the highest byte down
  std::uint32_t time;  // hours, minutes, seconds and hundredths
};

static_assert(sizeof(Ref) == 8 && sizeof(AttrDesc) == 12 && sizeof(Date) == 12);
static_assert(sizeof(DistinguishedName) == 1284 && offsetof(DistinguishedName, value) == 260);
static_assert(sizeof(RecipientRecord) == 2316 && offsetof(RecipientRecord, address) == 1288);
static_assert(sizeof(ItemDesc) == 592 && offsetof(ItemDesc, path) == 324 &&
              offsetof(ItemDesc, size) == 580 && offsetof(ItemDesc, ref) == 584);
static_assert(sizeof(BuffFileDesc) == 16 && offsetof(BuffFileDesc, fileName) == 12);

}  // namespace vim32
