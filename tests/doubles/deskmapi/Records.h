// The records of Simple MAPI as C programs have them, in 32 bits: MapiFileDesc, MapiRecipDesc and
// MapiMessage with ANSI or, for MAPISendMailW, UTF-16 text.
#pragma once

#include <cstdint>

namespace deskmapi {

template <class Char>
struct FileRecord {
  std::uint32_t reserved;
  std::uint32_t flags;
  std::int32_t position;
  const Char* path;
  const Char* name;
  const void* type;
};

template <class Char>
struct PartyRecord {
  std::uint32_t reserved;
  std::uint32_t kind;
  const Char* name;
  const Char* address;
  std::uint32_t entryIdSize;
  const void* entryId;
};

template <class Char>
struct MailRecord {
  std::uint32_t reserved;
  const Char* subject;
  const Char* text;
  const Char* type;
  const Char* date;
  const Char* conversation;
  std::uint32_t flags;
  const PartyRecord<Char>* originator;
  std::uint32_t recipientCount;
  const PartyRecord<Char>* recipients;
  std::uint32_t fileCount;
  const FileRecord<Char>* files;
};

static_assert(sizeof(FileRecord<char>) == 24);
static_assert(sizeof(PartyRecord<char>) == 24);
static_assert(sizeof(MailRecord<char>) == 48);

}  // namespace deskmapi
