#include "platform/win32/Mapi32.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/win32/MapiLayout.h"
#include "platform/win32/WideText.h"

namespace quillon {
namespace {

using NativeRecipient = mapi_record::Recipient<char>;
using AnsiMessage = mapi_record::Message<char>;
using WideMessage = mapi_record::Message<wchar_t>;

constexpr ULONG kBroken = 2;  // MAPI_E_FAILURE
constexpr std::size_t kLongestId = 512;

// The types of the functions, by which a call is made.
using LogonType = ULONG(WINAPI*)(ULONG, char*, char*, ULONG, ULONG, ULONG*);
using LogoffType = ULONG(WINAPI*)(ULONG, ULONG, ULONG, ULONG);
using FindNextType = ULONG(WINAPI*)(ULONG, ULONG, char*, char*, ULONG, ULONG, char*);
using ReadMailType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, ULONG, AnsiMessage**);
using DeleteMailType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, ULONG);
using ResolveNameType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, ULONG, NativeRecipient**);
using AddressType = ULONG(WINAPI*)(ULONG, ULONG, char*, ULONG, char*, ULONG, NativeRecipient*,
                                   ULONG, ULONG, ULONG*, NativeRecipient**);
using SendMailType = ULONG(WINAPI*)(ULONG, ULONG, AnsiMessage*, ULONG, ULONG);
using SendMailWideType = ULONG(WINAPI*)(ULONG, ULONG, WideMessage*, ULONG, ULONG);
using FreeBufferType = ULONG(WINAPI*)(void*);

}  // namespace

template <class... Parameters, class... Arguments>
std::uint32_t Mapi32::Call(const char* function, ULONG(WINAPI* type)(Parameters...),
                           Arguments... arguments) {
  return library_.Call(function, type, ULONG{mapi::kNotSupported}, kBroken, arguments...);
}

std::uint32_t Mapi32::Logon(std::uint32_t window, const std::string& profile,
                            const std::string& password, std::uint32_t flags,
                            std::uint32_t& session) {
  auto name = codePage_.ToBytes(profile);
  auto secret = codePage_.ToBytes(password);
  ULONG handle = 0;
  const auto result =
      Call("MAPILogon", LogonType{}, window, name.data(), secret.data(), flags, 0UL, &handle);
  session = handle;
  return result;
}

std::uint32_t Mapi32::Logoff(std::uint32_t session, std::uint32_t window) {
  return Call("MAPILogoff", LogoffType{}, session, window, 0UL, 0UL);
}

std::uint32_t Mapi32::FindNext(std::uint32_t session, std::uint32_t window,
                               const std::string& messageType, const std::string& seed,
                               std::uint32_t flags, std::string& id) {
  auto type = codePage_.ToBytes(messageType);
  auto before = codePage_.ToBytes(seed);
  std::array<char, kLongestId + 1> found{};
  const auto result =
      Call("MAPIFindNext", FindNextType{}, session, window, type.empty() ? nullptr : type.data(),
           before.empty() ? nullptr : before.data(), flags, 0UL, found.data());
  if (result == mapi::kSuccess) {
    id = codePage_.ToText({found.data(), strnlen(found.data(), kLongestId)});
  }
  return result;
}

std::uint32_t Mapi32::ReadEnvelope(std::uint32_t session, std::uint32_t window,
                                   const std::string& id, std::uint32_t flags,
                                   MapiMessage& message) {
  return ReadMail(session, window, id, flags, message);
}

std::uint32_t Mapi32::ReadMail(std::uint32_t session, std::uint32_t window, const std::string& id,
                               std::uint32_t flags, MapiMessage& message) {
  auto identifier = codePage_.ToBytes(id);
  AnsiMessage* read = nullptr;
  const auto result =
      Call("MAPIReadMail", ReadMailType{}, session, window, identifier.data(), flags, 0UL, &read);
  if (read == nullptr) return result == mapi::kSuccess ? kBroken : result;
  if (result == mapi::kSuccess) message = MessageFrom(*read, codePage_);
  Call("MAPIFreeBuffer", FreeBufferType{}, static_cast<void*>(read));
  return result;
}

std::uint32_t Mapi32::DeleteMail(std::uint32_t session, std::uint32_t window,
                                 const std::string& id) {
  auto identifier = codePage_.ToBytes(id);
  return Call("MAPIDeleteMail", DeleteMailType{}, session, window, identifier.data(), 0UL, 0UL);
}

std::uint32_t Mapi32::ResolveName(std::uint32_t session, std::uint32_t window,
                                  const std::string& name, std::uint32_t flags,
                                  MapiRecipient& recipient) {
  auto text = codePage_.ToBytes(name);
  NativeRecipient* found = nullptr;
  const auto result =
      Call("MAPIResolveName", ResolveNameType{}, session, window, text.data(), flags, 0UL, &found);
  if (found == nullptr) return result == mapi::kSuccess ? kBroken : result;
  if (result == mapi::kSuccess) recipient = RecipientFrom(*found, codePage_);
  Call("MAPIFreeBuffer", FreeBufferType{}, static_cast<void*>(found));
  return result;
}

std::uint32_t Mapi32::Address(std::uint32_t session, std::uint32_t window,
                              const std::string& caption, std::vector<MapiRecipient>& recipients) {
  MapiMessage before;
  before.recipients = recipients;
  NativeMessage<char> laid(before,
                           [this](const std::string& text) { return codePage_.ToBytes(text); });
  auto title = codePage_.ToBytes(caption);
  ULONG count = 0;
  NativeRecipient* chosen = nullptr;
  const auto result =
      Call("MAPIAddress", AddressType{}, session, window, title.data(), mapi::kEditFields, nullptr,
           laid.Record()->recipientCount, laid.Record()->recipients, 0UL, 0UL, &count, &chosen);
  if (result == mapi::kSuccess) {
    recipients.clear();
    for (ULONG i = 0; chosen != nullptr && i < count; ++i) {
      recipients.push_back(RecipientFrom(chosen[i], codePage_));
    }
  }
  if (chosen != nullptr) Call("MAPIFreeBuffer", FreeBufferType{}, static_cast<void*>(chosen));
  return result;
}

bool Mapi32::Fits(const MapiMessage& message) const {
  const auto fits = [this](const std::string& text) {
    return codePage_.ToText(codePage_.ToBytes(text)) == text;
  };
  return fits(message.subject) && fits(message.noteText) &&
         std::all_of(message.recipients.begin(), message.recipients.end(),
                     [&](const auto& one) { return fits(one.name) && fits(one.address); }) &&
         std::all_of(message.files.begin(), message.files.end(),
                     [&](const auto& one) { return fits(one.path) && fits(one.name); });
}

std::uint32_t Mapi32::SendMail(std::uint32_t session, std::uint32_t window,
                               const MapiMessage& message, std::uint32_t flags) {
  constexpr const char* kWideFunction = "MAPISendMailW";
  if (!Fits(message) && library_.Find<void()>(kWideFunction) != nullptr) {
    NativeMessage<wchar_t> laid(message,
                                [](const std::string& text) { return WideFromUtf8(text); });
    return Call(kWideFunction, SendMailWideType{}, session, window, laid.Record(), flags, 0UL);
  }
  NativeMessage<char> laid(message,
                           [this](const std::string& text) { return codePage_.ToBytes(text); });
  return Call("MAPISendMail", SendMailType{}, session, window, laid.Record(), flags, 0UL);
}

std::uint32_t Mapi32::SendMailInDialog(std::uint32_t session, std::uint32_t window,
                                       const MapiMessage& message, std::uint32_t flags) {
  return SendMail(session, window, message, flags);
}

}  // namespace quillon
