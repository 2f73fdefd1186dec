#include "platform/win32/VbaMap32.h"

#include <algorithm>

#include "platform/win32/BasicRecords.h"
#include "platform/win32/LibrarySearch.h"

namespace quillon {
namespace {

using mapi_record::BasicFile;
using mapi_record::BasicMessage;
using mapi_record::BasicRecipient;

constexpr ULONG kBroken = 2;  // MAPI_E_FAILURE

using LogonType = ULONG(WINAPI*)(ULONG, char*, char*, ULONG, ULONG, ULONG*);
using LogoffType = ULONG(WINAPI*)(ULONG, ULONG, ULONG, ULONG);
using FindNextType = ULONG(WINAPI*)(ULONG, ULONG, BSTR*, BSTR*, ULONG, ULONG, BSTR*);
using ReadMailType = ULONG(WINAPI*)(ULONG*, ULONG*, ULONG*, ULONG, ULONG, BSTR*, ULONG, ULONG);
using GetReadMailType = ULONG(WINAPI*)(ULONG, BasicMessage*, SAFEARRAY**, SAFEARRAY**,
                                       BasicRecipient*);
using DeleteMailType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, ULONG);
using ResolveNameType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, ULONG, BasicRecipient*);
using AddressType = ULONG(WINAPI*)(ULONG*, ULONG, ULONG, BSTR*, ULONG, BSTR*, ULONG*, SAFEARRAY**,
                                   ULONG, ULONG);
using GetAddressType = ULONG(WINAPI*)(ULONG, ULONG, SAFEARRAY**);
using SendMailType = ULONG(WINAPI*)(ULONG, ULONG, BasicMessage*, SAFEARRAY**, SAFEARRAY**, ULONG,
                                    ULONG);

}  // namespace

bool VbaMap32::IsInstalled() {
  return !FindLibrary(L"vbamap32.dll").empty();
}

template <class... Parameters, class... Arguments>
std::uint32_t VbaMap32::Call(const char* function, ULONG(WINAPI* type)(Parameters...),
                             Arguments... arguments) {
  return library_.Call(function, type, ULONG{mapi::kNotSupported}, kBroken, arguments...);
}

std::uint32_t VbaMap32::Logon(std::uint32_t window, const std::string& profile,
                              const std::string& password, std::uint32_t flags,
                              std::uint32_t& session) {
  auto name = Encoding().ToBytes(profile);
  auto secret = Encoding().ToBytes(password);
  ULONG handle = 0;
  const auto result =
      Call("BMAPILogon", LogonType{}, window, name.data(), secret.data(), flags, 0UL, &handle);
  session = handle;
  return result;
}

std::uint32_t VbaMap32::Logoff(std::uint32_t session, std::uint32_t window) {
  return Call("BMAPILogoff", LogoffType{}, session, window, 0UL, 0UL);
}

std::uint32_t VbaMap32::FindNext(std::uint32_t session, std::uint32_t window,
                                 const std::string& messageType, const std::string& seed,
                                 std::uint32_t flags, std::string& id) {
  AnsiBstr type(Encoding().ToBytes(messageType));
  AnsiBstr before(Encoding().ToBytes(seed));
  AnsiBstr found;
  const auto result = Call("BMAPIFindNext", FindNextType{}, session, window, type.Place(),
                           before.Place(), flags, 0UL, found.Place());
  if (result == mapi::kSuccess) id = Encoding().ToText(found.Bytes());
  return result;
}

std::uint32_t VbaMap32::ReadEnvelope(std::uint32_t session, std::uint32_t window,
                                     const std::string& id, std::uint32_t flags,
                                     MapiMessage& message) {
  AnsiBstr identifier(Encoding().ToBytes(id));
  ULONG handle = 0;
  ULONG recipientCount = 0;
  ULONG fileCount = 0;
  auto result = Call("BMAPIReadMail", ReadMailType{}, &handle, &recipientCount, &fileCount, session,
                     window, identifier.Place(), flags, 0UL);
  if (result != mapi::kSuccess) return result;
  BasicRecord<BasicMessage> read;
  BasicRecord<BasicRecipient> originator;
  BasicArray<BasicRecipient> recipients(recipientCount);
  BasicArray<BasicFile> files(fileCount);
  result = Call("BMAPIGetReadMail", GetReadMailType{}, handle, read.Get(), recipients.Place(),
                files.Place(), originator.Get());
  if (result != mapi::kSuccess) return result;
  message = Taken(*read.Get(), Encoding());
  message.originator = Taken(*originator.Get(), Encoding());
  for (ULONG i = 0; i < std::min(recipientCount, recipients.Size()); ++i) {
    message.recipients.push_back(Taken(recipients.At(i), Encoding()));
  }
  for (ULONG i = 0; i < std::min(fileCount, files.Size()); ++i) {
    message.files.push_back(Taken(files.At(i), Encoding()));
  }
  return result;
}

std::uint32_t VbaMap32::DeleteMail(std::uint32_t session, std::uint32_t window,
                                   const std::string& id) {
  auto identifier = Encoding().ToBytes(id);
  return Call("BMAPIDeleteMail", DeleteMailType{}, session, window, identifier.data(), 0UL, 0UL);
}

std::uint32_t VbaMap32::ResolveName(std::uint32_t session, std::uint32_t window,
                                    const std::string& name, std::uint32_t flags,
                                    MapiRecipient& recipient) {
  auto text = Encoding().ToBytes(name);
  BasicRecord<BasicRecipient> found;
  const auto result = Call("BMAPIResolveName", ResolveNameType{}, session, window, text.data(),
                           flags, 0UL, found.Get());
  if (result == mapi::kSuccess) recipient = Taken(*found.Get(), Encoding());
  return result;
}

std::uint32_t VbaMap32::Address(std::uint32_t session, std::uint32_t window,
                                const std::string& caption,
                                std::vector<MapiRecipient>& recipients) {
  BasicArray<BasicRecipient> before(recipients.size());
  for (std::size_t i = 0; i < recipients.size(); ++i) {
    Lay(before.At(i), recipients[i], Encoding());
  }
  AnsiBstr title(Encoding().ToBytes(caption));
  AnsiBstr label;
  ULONG handle = 0;
  auto count = static_cast<ULONG>(recipients.size());
  auto result = Call("BMAPIAddress", AddressType{}, &handle, session, window, title.Place(),
                     mapi::kEditFields, label.Place(), &count, before.Place(), 0UL, 0UL);
  if (result != mapi::kSuccess) return result;
  BasicArray<BasicRecipient> chosen(count);
  result = Call("BMAPIGetAddress", GetAddressType{}, handle, count, chosen.Place());
  if (result != mapi::kSuccess) return result;
  recipients.clear();
  for (ULONG i = 0; i < std::min(count, chosen.Size()); ++i) {
    recipients.push_back(Taken(chosen.At(i), Encoding()));
  }
  return result;
}

std::uint32_t VbaMap32::SendMailInDialog(std::uint32_t session, std::uint32_t window,
                                         const MapiMessage& message, std::uint32_t flags) {
  BasicRecord<BasicMessage> laid;
  BasicArray<BasicRecipient> recipients(message.recipients.size());
  BasicArray<BasicFile> files(message.files.size());
  Lay(*laid.Get(), message, Encoding());
  for (std::size_t i = 0; i < message.recipients.size(); ++i) {
    Lay(recipients.At(i), message.recipients[i], Encoding());
  }
  for (std::size_t i = 0; i < message.files.size(); ++i) {
    Lay(files.At(i), message.files[i], Encoding());
  }
  return Call("BMAPISendMail", SendMailType{}, session, window, laid.Get(), recipients.Place(),
              files.Place(), flags, 0UL);
}

}  // namespace quillon
