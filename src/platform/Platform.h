// What the system implements of the ports. Program entries make one of each and pass it on by
// reference; posix/ and win32/ define them.
#pragma once

#include <memory>

#include "platform/Platform.h"
#include "ports/CharacterEncoder.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"
#include "ports/Crypto.h"
#include "ports/FileSystem.h"
#include "ports/LocalClock.h"
#include "ports/Network.h"
#include "ports/Tls.h"

namespace quillon {

std::unique_ptr<NetworkLoop> MakeNetworkLoop();
std::unique_ptr<FileSystem> MakeFileSystem();
std::unique_ptr<LocalClock> MakeLocalClock();
std::unique_ptr<Crypto> MakeCrypto();

// Schannel on Windows, OpenSSL on Linux.
std::unique_ptr<TlsLibrary> MakeTlsLibrary();

// The ANSI code page of the system: Windows-1252 on Linux.
std::unique_ptr<CodePage> MakeAnsiCodePage();

std::unique_ptr<CharacterSets> MakeCharacterSets();
// The character sets that messages are written in: Windows' code pages, iconv's on Linux.
std::unique_ptr<CharacterEncoder> MakeCharacterEncoder();

}  // namespace quillon
