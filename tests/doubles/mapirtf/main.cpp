// mapirtf.dll: the rich text of a message that is in the store.
#include <windows.h>
#include <exception>
#include <string>

#include "desk/Store.h"
#include "olemsg32/StoreId.h"
#include "platform/win32/WideText.h"

namespace {

std::string Utf8FromAnsi(const char* text) {
  if (text == nullptr) return {};
  const int length = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), length);
  wide.pop_back();  // the NUL at the end
  return quillon::Utf8FromWide(wide);
}

enum : int { kStored, kNoAccount, kNoMessage, kFailed, kNoRichText };

int Write(const std::string& profile, const std::string& messageId, const std::string& storeId,
          const std::string& text) {
  desk::Store store;
  const auto log = profile + ", " + messageId + ", " + storeId + ", " + text.substr(0, 20);
  if (const auto fault = store.Call("writertf", log)) return std::stoi(*fault, nullptr, 0);
  if (!text.starts_with("{\\rtf")) return kNoRichText;
  const auto account = store.FindAccount(profile);
  if (!account) return kNoAccount;
  const std::string mailbox =
      storeId.empty() ? account->profile : desk::FromHex(storeId).value_or("");
  if (mailbox != account->profile && mailbox != desk::kPublicFolders) return kNoMessage;
  auto message = store.Read(mailbox, messageId);
  if (!message) return kNoMessage;
  message->richText = text;
  return store.Change(mailbox, *message) ? kStored : kNoMessage;
}

}  // namespace

extern "C" int WINAPI writertf(const char* profile, const char* messageId, const char* storeId,
                               const char* text) {
  try {
    return Write(Utf8FromAnsi(profile), Utf8FromAnsi(messageId), Utf8FromAnsi(storeId),
                 Utf8FromAnsi(text));
  } catch (const std::exception&) {
    return kFailed;
  }
}
