// vim32.dll: the desk as a VIM 1.00 library. This file: the library itself, and its sessions. What
// is no call's fault, in the fault file:
//
//   NoDefaultSession   nobody has logged in to the mail program yet
//   VimProduct 63      the number of the product; 11 without it
//
// The words of calls are those of Library.h.
#include <windows.h>

#include "Values.h"
#include "core/Text.h"
#include "desk/win32/AnsiText.h"

namespace vim32 {
namespace {

using desk::Utf8From;

// The library and its companions are looked for in the current directory.
std::string CurrentDirectory() {
  char place[MAX_PATH + 1] = "";
  GetCurrentDirectoryA(sizeof place, place);
  return Utf8From(place);
}

std::uint32_t Product(const Library& library) {
  const std::string word = library.store.Word("VimProduct").value_or("");
  return word.empty() ? std::uint32_t{kSelCcMail} : std::strtoul(word.c_str(), nullptr, 10);
}

desk::Account DefaultAccount(const Library& library, std::uint32_t refusal) {
  Require(!library.store.Word("NoDefaultSession"), refusal);
  const std::optional<desk::Account> account = library.store.FindAccount({});
  Require(account.has_value(), refusal);
  return *account;
}

desk::Account LogIn(const Library& library, const char* path, const char* name,
                    const char* password) {
  if (path == nullptr && name == nullptr && password == nullptr) {
    return DefaultAccount(library, kPassRequired);
  }
  const bool located = path != nullptr && (*path != '\0' || Product(library) != kSelCcMail);
  Require(located && name != nullptr && *name != '\0' && password != nullptr && *password != '\0',
          kAllParamsRequired);
  const std::optional<desk::Account> account = library.store.FindAccount(Utf8From(name));
  Require(account && account->password == Utf8From(password), kInvalidPassword);
  return *account;
}

}  // namespace

extern "C" {

std::uint32_t WINAPI VIMInitialize() {
  return Call({"VIMInitialize"}, "in=" + CurrentDirectory(),
              [](Library& library) { ++library.initialized; });
}

std::uint32_t WINAPI VIMTerminate() {
  return Call({"VIMTerminate"}, TheLibrary().WhatIsOpen(), [](Library& library) {
    if (--library.initialized == 0) library.Forget();
  });
}

std::uint32_t WINAPI VIMGetDefaultSessionInfo(Word pathSize, char* path, Word nameSize,
                                              char* name) {
  return Call({"VIMGetDefaultSessionInfo"}, {}, [&](const Library& library) {
    const desk::Account account = DefaultAccount(library, kNoDefault);
    PutText(path, pathSize, desk::Utf8FromPath(library.store.Where()));
    PutText(name, nameSize, account.profile);
  });
}

std::uint32_t WINAPI VIMQueryCapability(std::uint32_t capability, Word size, void* data) {
  return Call({"VIMQueryCapability"}, std::to_string(capability), [&](const Library& library) {
    Require(capability == kSelProduct, kInvalidSelector);
    Places({capability, size, data}, 0).Put(Product(library));
  });
}

std::uint32_t WINAPI VIMOpenSession(const char* path, const char* name, const char* password,
                                    std::uint32_t version, std::uint32_t characters,
                                    Handle* session) {
  const bool shared = path == nullptr && name == nullptr && password == nullptr;
  const std::string told = shared ? "shared" : "path=" + Utf8From(path) + " name=" + Utf8From(name);
  return Call({"VIMOpenSession"}, told, [&](Library& library) {
    Require(session != nullptr);
    Require(version == kVersion, kUnsupVersion);
    Require(characters == kSelCp1252 || characters == kSelNative, kInvalidSelector);
    *session = library.Open(0, Session{LogIn(library, path, name, password)});
  });
}

std::uint32_t WINAPI VIMCloseSession(Handle session) {
  return Call({"VIMCloseSession"}, {}, [&](Library& library) { library.Close<Session>(session); });
}

}  // extern "C"

}  // namespace vim32
