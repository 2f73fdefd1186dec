// A container is a folder of the account; a category is a folder too. A message that is put into a
// category is copied there, and stays where it was until it is removed; taken out of the category,
// the copy goes, or what has no place but the category is in the inbox again.
#include <windows.h>

#include "Values.h"
#include "desk/win32/AnsiText.h"

namespace vim32 {
namespace {

using desk::Utf8From;

std::optional<desk::Folder> Category(Library& library, Handle container, const char* name) {
  Require(name != nullptr && *name != '\0');
  const desk::Folder root = library.store.Root(library.AccountOf(container).profile);
  return library.store.Subfolder(root, Utf8From(name));
}

// What a filter leaves, oldest first.
std::vector<std::string> Filtered(Library& library, Handle container, std::uint32_t filter,
                                  std::uint32_t flags) {
  desk::Folder folder = library.Get<Container>(container).folder;
  const std::string mailbox = library.AccountOf(container).profile;
  if (filter == kSelSent) {
    folder = library.store.KnownFolder(mailbox, desk::kSentItems);
  } else {
    Require(filter == kSelNoFilter, kInvalidSelector);
  }
  Require(flags == 0 || flags == kUnreadOnly);
  std::vector<std::string> ids = library.store.MessageIds(folder);
  if (flags == kUnreadOnly) {
    std::erase_if(ids, [&](const std::string& id) {
      const std::optional<desk::Message> message = library.store.Read(mailbox, id);
      return !message || !message->unread;
    });
  }
  return ids;
}

std::string Told(Ref reference, const char* category) {
  return "message=" + std::to_string(reference.first) + " category=" + Utf8From(category);
}

}  // namespace

extern "C" {

std::uint32_t WINAPI VIMOpenMessageContainer(Handle session, const char* name, Handle* container) {
  const std::string shown = name == nullptr ? "inbox" : "name=" + Utf8From(name);
  return Call({"VIMOpenMessageContainer"}, shown, [&](Library& library) {
    Require(container != nullptr);
    const std::string mailbox = library.Get<Session>(session).account.profile;
    std::optional<desk::Folder> folder;
    if (name == nullptr) {
      folder = library.store.KnownFolder(mailbox, desk::kInbox);
    } else {
      folder = library.store.Subfolder(library.store.Root(mailbox), Utf8From(name));
    }
    Require(folder.has_value(), kOpenFailure);
    *container = library.Open(session, Container{*folder});
  });
}

std::uint32_t WINAPI VIMCloseMessageContainer(Handle container) {
  return Call({"VIMCloseMessageContainer"}, {},
              [&](Library& library) { library.Close<Container>(container); });
}

std::uint32_t WINAPI VIMEnumerateMessages(Handle container, Ref* position, std::int32_t skip,
                                          Word attributeCount, const AttrDesc* attributes,
                                          Word* count, std::uint32_t filter, const void*,
                                          std::uint32_t flags, Bool* more) {
  const std::string told = "filter=" + std::to_string(filter) + " flags=" + std::to_string(flags);
  return Call({"VIMEnumerateMessages"}, told, [&](Library& library) {
    const std::vector<std::string> ids = Filtered(library, container, filter, flags);
    const std::string mailbox = library.AccountOf(container).profile;
    Enumerate(ids.size(), position, skip, count, more, [&](std::size_t number, std::size_t index) {
      const std::optional<desk::Message> message = library.store.Read(mailbox, ids[number]);
      Require(message.has_value(), kReadFailure);
      PutAttributes(attributeCount, attributes, index,
                    [&](const Places& places, std::uint32_t attribute) {
                      if (attribute == kSelRef) {
                        places.Put(library.ReferenceOf(ids[number]));
                      } else {
                        PutHeader(*message, places, attribute);
                      }
                    });
    });
  });
}

std::uint32_t WINAPI VIMRemoveMessage(Handle container, Ref reference) {
  return Call({"VIMRemoveMessage"}, {}, [&](Library& library) {
    const desk::Message message = library.Read(container, reference);
    library.store.Remove(library.AccountOf(container).profile, message.id);
  });
}

std::uint32_t WINAPI VIMMarkMessageAsRead(Handle container, Ref reference) {
  return Call({"VIMMarkMessageAsRead"}, {}, [&](Library& library) {
    desk::Message message = library.Read(container, reference);
    message.unread = false;
    library.store.Change(library.AccountOf(container).profile, message);
  });
}

std::uint32_t WINAPI VIMQueryUnreadMailCount(Handle container, std::uint32_t* count) {
  return Call({"VIMQueryUnreadMailCount"}, {}, [&](Library& library) {
    Require(count != nullptr);
    *count =
        static_cast<std::uint32_t>(Filtered(library, container, kSelNoFilter, kUnreadOnly).size());
  });
}

std::uint32_t WINAPI VIMSetMessageCategory(Handle container, Ref reference, const char* category) {
  return Call({"VIMSetMessageCategory"}, Told(reference, category), [&](Library& library) {
    const desk::Message message = library.Read(container, reference);
    const std::string mailbox = library.AccountOf(container).profile;
    std::optional<desk::Folder> folder = Category(library, container, category);
    if (!folder) {
      folder = library.store.AddFolder(library.store.Root(mailbox), Utf8From(category));
    }
    const std::optional<std::string> copy = library.store.Copy(mailbox, message.id, *folder);
    library.copies[message.id + folder->id] = copy.value_or("");
  });
}

std::uint32_t WINAPI VIMRemoveMessageCategory(Handle container, Ref reference,
                                              const char* category) {
  return Call({"VIMRemoveMessageCategory"}, Told(reference, category), [&](Library& library) {
    const desk::Message message = library.Read(container, reference);
    const std::optional<desk::Folder> folder = Category(library, container, category);
    Require(folder.has_value(), kNameNotFound);
    const std::string mailbox = library.AccountOf(container).profile;
    const auto copy = library.copies.extract(message.id + folder->id);
    if (folder->id == message.folderId) {
      library.store.Move(mailbox, message.id, library.store.KnownFolder(mailbox, desk::kInbox));
    } else if (copy) {
      library.store.Remove(mailbox, copy.mapped());
    } else {
      throw Refusal{kNameNotFound};
    }
  });
}

}  // extern "C"

}  // namespace vim32
