// A message while clients work on it: what the objects of one message share.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "desk/Store.h"
#include "desk/win32/TakenFile.h"

namespace desk {

// An item of one of the message's lists, which objects of its own may hold.
template <class Record>
struct Part {
  Record record;
  bool gone = false;
};
template <class Record>
using Parts = std::vector<std::shared_ptr<Part<Record>>>;

struct TakenAttachment : Attachment {
  std::shared_ptr<TakenFile> taken;  // its bytes, until they are in the store
};

struct MessageState {
  std::string mailbox;
  Message record;  // its lists are empty here; they are the ones below
  Parts<Recipient> recipients;
  Parts<TakenAttachment> attachments;
  Parts<Field> fields;
  bool unsaved = false;  // there was no Update yet: nobody knows it by its identifier
  bool gone = false;     // sent, deleted or moved
};
using MessageStatePtr = std::shared_ptr<MessageState>;

MessageStatePtr StateOf(const std::string& mailbox, Message message);

// Throws kNotFound.
MessageStatePtr ReadState(const std::string& mailbox, const std::string& id);

// A draft in the folder: it is in the store from the beginning.
MessageStatePtr NewState(const Folder& folder, const Message& draft);

// What is to be written. Rich text is what the store has by now, since another writes it there.
Message WholeMessage(const MessageState& state);

// Writes the message to its place; throws kObjectDeleted when it is not there any more.
void SaveState(MessageState& state);

// Reads it anew; what objects hold of its lists is gone.
void ReloadState(MessageState& state);

// Copies the bytes of a file for an attachment; throws kNotFound when it cannot be read.
void TakeFile(TakenAttachment& attachment, const std::string& path);

}  // namespace desk
