// A document while clients work on it: what the objects of one document share.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/Store.h"
#include "desk/win32/TakenFile.h"

namespace desk {

// Types of items.
inline constexpr long kRichText = 1;
inline constexpr long kNumbers = 768;
inline constexpr long kDates = 1024;
inline constexpr long kAttachment = 1084;
inline constexpr long kText = 1280;

struct Item {
  std::string name;
  long type = kText;
  std::vector<std::string> values;  // a date as the store has it, a number as text
};

struct EmbeddedFile {
  std::string name;    // unique in the document
  std::string source;  // what the sender called it
  std::filesystem::path path;
  std::shared_ptr<TakenFile> taken;  // its bytes, until they are in the store
};

struct DocumentState {
  std::string mailbox;  // empty: the address book
  Message record;       // without an identifier: it is nowhere yet
  std::vector<Item> items;
  std::vector<EmbeddedFile> files;
  bool keepWhenSent = false;

  Item* Find(const std::string& name);
  // Its first value, or an empty text.
  std::string Text(const std::string& name);
  void Replace(const std::string& name, std::vector<std::string> values, long type = kText);
  void Embed(const std::string& source, std::filesystem::path path,
             std::shared_ptr<TakenFile> taken = {});
};
using DocumentPtr = std::shared_ptr<DocumentState>;

// A message of the store as a document. One that has gone by now has no items.
DocumentPtr ReadDocument(const std::string& mailbox, const std::string& id);

// A person or group of the address book.
DocumentPtr PersonDocument(const Entry& entry);

bool IsStillThere(const DocumentState& document);
// Writes it into the store; a new one is in no folder then.
void SaveDocument(DocumentState& document);
// `account` is who sends. Throws kNoSuchName when nobody is to have it.
void SendDocument(DocumentState& document, const Account& account);

// The folders a document is in: the store has it in one, and a field names the others.
bool IsIn(const Message& message, const Folder& folder);
void PutIn(const std::string& mailbox, const std::string& id, const Folder& folder);
void RemoveFrom(const std::string& mailbox, const std::string& id, const Folder& folder);

// Eight digits.
std::string NoteIdOf(const std::string& id);

// 32 digits, the last of them those of the store's identifier, and back; empty for anything else.
std::string UniversalId(const std::string& id);
std::string StoreIdOf(const std::string& universalId);

}  // namespace desk
