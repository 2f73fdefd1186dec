// What COM and the registry are told of a class whose objects clients create. The classes of the
// product stand at the end: a row there registers one more.
#pragma once

#include <windows.h>
#include <array>

#include "quillon_h.h"

namespace quillon {

struct PublicClass {
  GUID id;           // of the coclass
  GUID interfaceId;  // of its default interface, a dual one
  const wchar_t* interfaceName;
  const wchar_t* progId;       // without a version
  const wchar_t* text;         // how the registry describes it
  const wchar_t* errorSource;  // where its errors come from
};

// The program, which is one for all its classes.
inline constexpr GUID kProgramId{
    0xE00787D4, 0x7369, 0x4CCF, {0xA0, 0x8E, 0xF5, 0x1F, 0xEA, 0x0A, 0x98, 0xE8}};

inline constexpr wchar_t kErrorSource[] = L"QuillonInterface.Server";

inline constexpr PublicClass kServerClass{
    __uuidof(::Server),         __uuidof(IServer),      L"IServer",
    L"QuillonInterface.Server", L"Quillon mail server", kErrorSource};

inline constexpr PublicClass kAddressBookClass{
    __uuidof(::AddressBook),         __uuidof(IAddressBook),  L"IAddressBook",
    L"QuillonInterface.AddressBook", L"Quillon address book", kErrorSource};

inline constexpr PublicClass kDialerClass{__uuidof(::Dialer), __uuidof(IDialer),
                                          L"IDialer",         L"QuillonInterface.Dialer",
                                          L"Quillon dialer",  kErrorSource};

inline constexpr std::array kPublicClasses{kServerClass, kAddressBookClass, kDialerClass};

}  // namespace quillon
