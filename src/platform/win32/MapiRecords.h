// The records of Simple MAPI as the library lays them out: with ANSI texts, and with wide ones for
// the functions that end in W.
#pragma once

#include <windows.h>
#include <cstddef>
#include <oleauto.h>

namespace quillon::mapi_record {

template <class Char>
struct Recipient {
  ULONG reserved = 0;
  ULONG recipientClass = 0;
  Char* name = nullptr;
  Char* address = nullptr;
  ULONG entryIdSize = 0;
  void* entryId = nullptr;
};

template <class Char>
struct File {
  ULONG reserved = 0;
  ULONG flags = 0;
  ULONG position = 0;
  Char* path = nullptr;
  Char* name = nullptr;
  void* type = nullptr;
};

template <class Char>
struct Message {
  ULONG reserved = 0;
  Char* subject = nullptr;
  Char* noteText = nullptr;
  Char* messageType = nullptr;
  Char* dateReceived = nullptr;
  Char* conversationId = nullptr;
  ULONG flags = 0;
  Recipient<Char>* originator = nullptr;
  ULONG recipientCount = 0;
  Recipient<Char>* recipients = nullptr;
  ULONG fileCount = 0;
  File<Char>* files = nullptr;
};

static_assert(sizeof(Recipient<char>) == 24 && offsetof(Recipient<char>, entryId) == 20);
static_assert(sizeof(File<char>) == 24 && offsetof(File<char>, path) == 12);
static_assert(sizeof(Message<char>) == 48 && offsetof(Message<char>, flags) == 24 &&
              offsetof(Message<char>, recipients) == 36 && offsetof(Message<char>, files) == 44);
static_assert(sizeof(Message<wchar_t>) == 48 && sizeof(Recipient<wchar_t>) == 24 &&
              sizeof(File<wchar_t>) == 24);

// As Visual Basic has them, for the library of counted strings: each text is a BSTR that holds ANSI
// bytes, the lists stand beside the message, and the originator too.
struct BasicMessage {
  ULONG reserved = 0;
  BSTR subject = nullptr;
  BSTR noteText = nullptr;
  BSTR messageType = nullptr;
  BSTR dateReceived = nullptr;
  BSTR conversationId = nullptr;
  ULONG flags = 0;
  ULONG recipientCount = 0;
  ULONG fileCount = 0;
};

struct BasicRecipient {
  ULONG reserved = 0;
  ULONG recipientClass = 0;
  BSTR name = nullptr;
  BSTR address = nullptr;
  ULONG entryIdSize = 0;
  BSTR entryId = nullptr;
};

struct BasicFile {
  ULONG reserved = 0;
  ULONG flags = 0;
  ULONG position = 0;
  BSTR path = nullptr;
  BSTR name = nullptr;
  BSTR type = nullptr;
};

static_assert(sizeof(BasicMessage) == 36 && offsetof(BasicMessage, fileCount) == 32);
static_assert(sizeof(BasicRecipient) == 24 && sizeof(BasicFile) == 24);

}  // namespace quillon::mapi_record
