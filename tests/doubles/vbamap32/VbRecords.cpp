#include "VbRecords.h"

#include <cstring>

namespace vbamap32 {
namespace {

void PutBytes(BSTR& text, const void* bytes, std::size_t size) {
  SysFreeString(text);
  text = SysAllocStringByteLen(static_cast<const char*>(bytes), static_cast<UINT>(size));
}

}  // namespace

const char* Ansi(BSTR text) {
  return text == nullptr ? "" : reinterpret_cast<const char*>(text);
}

void Put(BSTR& text, const char* ansi) {
  PutBytes(text, ansi == nullptr ? "" : ansi, ansi == nullptr ? 0 : std::strlen(ansi));
}

void Put(VbParty& party, const CParty& native) {
  party.kind = static_cast<std::int32_t>(native.kind);
  Put(party.name, native.name);
  Put(party.address, native.address);
  party.entryIdSize = static_cast<std::int32_t>(native.entryIdSize);
  PutBytes(party.entryId, native.entryId, native.entryIdSize);
}

void Put(VbFile& file, const CFile& native) {
  file.flags = static_cast<std::int32_t>(native.flags);
  file.position = native.position;
  Put(file.path, native.path);
  Put(file.name, native.name);
  Put(file.type, nullptr);
}

void Put(VbMail& mail, const CMail& native) {
  Put(mail.subject, native.subject);
  Put(mail.text, native.text);
  Put(mail.type, native.type);
  Put(mail.date, native.date);
  Put(mail.conversation, native.conversation);
  mail.flags = static_cast<std::int32_t>(native.flags);
  mail.recipientCount = static_cast<std::int32_t>(native.recipientCount);
  mail.fileCount = static_cast<std::int32_t>(native.fileCount);
}

std::unique_ptr<NativeMail> Native(const VbMail& mail, SAFEARRAY** parties, SAFEARRAY** files) {
  const VbParty* const vbParties = ArrayOf<VbParty>(parties, mail.recipientCount);
  const VbFile* const vbFiles = ArrayOf<VbFile>(files, mail.fileCount);
  if ((mail.recipientCount != 0 && vbParties == nullptr) ||
      (mail.fileCount != 0 && vbFiles == nullptr)) {
    return nullptr;
  }
  auto native = std::make_unique<NativeMail>();
  for (std::int32_t index = 0; index < mail.recipientCount; ++index) {
    const VbParty& party = vbParties[index];
    native->parties.push_back(
        {0, static_cast<std::uint32_t>(party.kind), Ansi(party.name), Ansi(party.address),
         party.entryId == nullptr ? 0 : static_cast<std::uint32_t>(party.entryIdSize),
         party.entryId});
  }
  for (std::int32_t index = 0; index < mail.fileCount; ++index) {
    const VbFile& file = vbFiles[index];
    native->files.push_back({0, static_cast<std::uint32_t>(file.flags), file.position,
                             Ansi(file.path), Ansi(file.name), nullptr});
  }
  native->mail = {0,
                  Ansi(mail.subject),
                  Ansi(mail.text),
                  Ansi(mail.type),
                  nullptr,
                  Ansi(mail.conversation),
                  static_cast<std::uint32_t>(mail.flags),
                  nullptr,
                  static_cast<std::uint32_t>(native->parties.size()),
                  native->parties.data(),
                  static_cast<std::uint32_t>(native->files.size()),
                  native->files.data()};
  return native;
}

}  // namespace vbamap32
