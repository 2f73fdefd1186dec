#include "support/FakeMessaging.h"

#include <fstream>
#include <iterator>

namespace quillon::testing {

namespace {

AutomationObjectPtr Plain(const RecordingObjectPtr& object) {
  return object;
}

std::string ArgumentText(const AutomationArguments& arguments, std::size_t index) {
  return index < arguments.size() ? TextOf(arguments[index].value) : std::string();
}

}  // namespace

FakeMessaging::FakeMessaging() {
  MakeSession();
  root = &AddStore("Mailbox - Joe");
  inbox = &AddFolder(*root, "Inbox");
  outbox = &AddFolder(*root, "Outbox");
  session->methods["Inbox"] = [this](const auto&) -> AutomationValue {
    return inbox->methods["Self"]({});
  };
  session->methods["Outbox"] = [this](const auto&) -> AutomationValue {
    return outbox->methods["Self"]({});
  };
  record.lines.clear();
}

void FakeMessaging::MakeSession() {
  session = std::make_shared<RecordingObject>(record, "Session");
  objects.classes["MAPI.Session"] = session;
  session->properties["version"] = 1.1F;
  session->properties["Name"] = "Profile of Joe";
  session->properties["InfoStores"] = Plain(Make<RecordingCollection>("InfoStores"));
  session->methods["Logon"] = [this](const auto&) {
    ++sessions;
    return AutomationValue();
  };
  session->methods["Logoff"] = [this](const auto&) {
    --sessions;
    return AutomationValue();
  };
  session->properties["DeliverNow"] = {};
  session->methods["GetMessage"] = [this](const auto& arguments) { return FindMessage(arguments); };
  session->methods["GetInfoStore"] = [this](const auto& arguments) -> AutomationValue {
    for (auto* const store : stores_) {
      if (store->Text("ID") == ArgumentText(arguments, 0)) return store->methods["Self"]({});
    }
    throw AutomationError(kMapiNotFound, "GetInfoStore");
  };
  session->methods["CreateConversationIndex"] = [](const auto& arguments) -> AutomationValue {
    return arguments.empty() ? "NEW" : ArgumentText(arguments, 0) + "-CHILD";
  };
}

RecordingObject& FakeMessaging::AddStore(const std::string& name) {
  auto store = Make("InfoStore");
  store->properties["Name"] = name;
  store->properties["ID"] = "store " + name;
  auto top = MakeFolder(nullptr, "Root", "store " + name);
  store->properties["RootFolder"] = Plain(top);
  store->methods["Self"] = [raw = std::weak_ptr<RecordingObject>(store)](const auto&) {
    return AutomationValue(Plain(raw.lock()));
  };
  stores_.push_back(store.get());
  Part(*session, "InfoStores").items.push_back(store);
  return *top;
}

RecordingObjectPtr FakeMessaging::MakeFolder(RecordingObject* parent, const std::string& name,
                                             const std::string& storeId) {
  auto folder = Make("Folder");
  folder->properties["Name"] = name;
  folder->properties["ID"] = NewId();
  folder->properties["StoreID"] = storeId;
  folder->properties["Class"] = 2;
  folder->properties["Update"] = {};
  auto* const raw = folder.get();
  folder->methods["Self"] = [self = std::weak_ptr<RecordingObject>(folder)](const auto&) {
    return AutomationValue(Plain(self.lock()));
  };
  auto messages = Make<RecordingCollection>("Messages");
  messages->properties["Sort"] = {};
  auto filter = Make("Filter");
  messages->properties["Filter"] = Plain(filter);
  messages->shows = [rules = filter.get()](RecordingObject& message) {
    return !TruthOf(rules->properties["Unread"]) || TruthOf(message.properties["Unread"]);
  };
  messages->make = [this, home = messages.get(), storeId](const auto&) {
    return MakeMessage(*home, storeId);
  };
  folder->properties["Messages"] = Plain(messages);
  auto children = Make<RecordingCollection>("Folders");
  children->make = [this, raw, storeId](const auto& arguments) {
    return MakeFolder(raw, ArgumentText(arguments, 0), storeId);
  };
  folder->properties["Folders"] = Plain(children);
  folder->methods["Delete"] = [parent, raw](const auto&) {
    if (parent != nullptr) Part(*parent, "Folders").Remove(raw);
    return AutomationValue();
  };
  folder->methods["CopyTo"] = [this, raw](const auto& arguments) -> AutomationValue {
    auto& copy = AddFolder(FolderOf(arguments), raw->Text("Name"));
    if (TruthOf(arguments.at(3).value)) {
      for (const auto& child : FolderNames(*raw)) AddFolder(copy, child);
    }
    return copy.methods["Self"]({});
  };
  folders_.push_back(raw);
  return folder;
}

RecordingObject& FakeMessaging::AddFolder(RecordingObject& parent, const std::string& name) {
  auto folder = MakeFolder(&parent, name, parent.Text("StoreID"));
  Part(parent, "Folders").items.push_back(folder);
  return *folder;
}

RecordingObjectPtr FakeMessaging::MakeMessage(RecordingCollection& home,
                                              const std::string& storeId) {
  auto message = Make("Message");
  message->properties["ID"] = NewId();
  message->properties["StoreID"] = storeId;
  message->properties["Update"] = {};
  auto recipients = Make<RecordingCollection>("Recipients");
  recipients->make = [this](const AutomationArguments& arguments) {
    auto recipient = Make("Recipient");
    recipient->properties["Name"] = ArgumentText(arguments, 0);
    recipient->properties["Address"] = "SMTP:" + ArgumentText(arguments, 0) + "@example.com";
    recipient->properties["Type"] =
        arguments.size() > 2 ? arguments[2].value : AutomationValue(std::int32_t{1});
    recipient->properties["Resolve"] = {};
    return recipient;
  };
  auto attachments = Make<RecordingCollection>("Attachments");
  attachments->make = [this](const auto&) { return MakeAttachment(); };
  auto fields = Make("Fields");
  fields->properties["Add"] = {};
  message->properties["Recipients"] = Plain(recipients);
  message->properties["Attachments"] = Plain(attachments);
  message->properties["Fields"] = Plain(fields);
  MakeMovable(*message, home);
  return message;
}

// An attachment keeps the bytes of its source: the file may be gone when the message is looked at.
RecordingObjectPtr FakeMessaging::MakeAttachment() {
  auto attachment = Make("Attachment");
  attachment->methods["WriteToFile"] = [raw = attachment.get()](const auto& arguments) {
    std::ofstream(ArgumentText(arguments, 0), std::ios::binary) << raw->Text("Content");
    return AutomationValue();
  };
  return attachment;
}

void FakeMessaging::MakeMovable(RecordingObject& message, RecordingCollection& home) {
  auto* const raw = &message;
  auto* const from = &home;
  message.methods["Delete"] = [raw, from](const auto&) {
    from->Remove(raw);
    return AutomationValue();
  };
  message.methods["Send"] = [this, raw, from](const auto&) {
    for (const auto& item : from->items) {
      if (item.get() == raw) sent.push_back(item);
    }
    from->Remove(raw);
    return AutomationValue();
  };
  const auto place = [this, raw, from](const AutomationArguments& arguments, bool copy) {
    auto& target = Messages(FolderOf(arguments));
    auto made = MakeMessage(target, {});
    made->properties["subject"] = raw->properties["subject"];
    target.items.push_back(made);
    if (!copy) from->Remove(raw);
    return AutomationValue(Plain(made));
  };
  message.methods["CopyTo"] = [place](const auto& arguments) { return place(arguments, true); };
  message.methods["MoveTo"] = [place](const auto& arguments) { return place(arguments, false); };
}

RecordingObject& FakeMessaging::AddMessage(RecordingObject& folder, const std::string& subject) {
  auto message = MakeMessage(Messages(folder), folder.Text("StoreID"));
  message->properties["subject"] = subject;
  Messages(folder).items.push_back(message);
  for (const auto* const property :
       {"text", "Unread", "Type", "TimeSent", "conversationTopic", "ConversationIndex",
        "Importance", "ReadReceipt", "DeliveryReceipt", "sender"}) {
    message->methods[property] = [raw = message.get(), property](const auto&) {
      const auto found = raw->properties.find(property);
      if (found == raw->properties.end()) throw AutomationError(kMapiNotFound, property);
      return found->second;
    };
  }
  return *message;
}

void FakeMessaging::AddRecipient(RecordingObject& message, std::int32_t type,
                                 const std::string& name) {
  auto& recipients = Part(message, "Recipients");
  recipients.items.push_back(recipients.make(Arguments({name, AutomationMissing(), type})));
}

void FakeMessaging::AddAttachment(RecordingObject& message, std::int32_t type,
                                  const std::string& name, const std::string& content) {
  auto attachment = MakeAttachment();
  attachment->properties["Type"] = type;
  attachment->properties["Name"] = name;
  attachment->properties["Content"] = content;
  Part(message, "Attachments").items.push_back(std::move(attachment));
}

RecordingCollection& FakeMessaging::Part(RecordingObject& object, const std::string& collection) {
  return dynamic_cast<RecordingCollection&>(*ObjectOf(object.properties.at(collection)));
}

std::vector<std::string> FakeMessaging::FolderNames(RecordingObject& folder) {
  std::vector<std::string> names;
  for (const auto& child : Part(folder, "Folders").items) names.push_back(child->Text("Name"));
  return names;
}

RecordingObject& FakeMessaging::FolderOf(const AutomationArguments& place) {
  for (auto* const folder : folders_) {
    if (folder->Text("ID") == ArgumentText(place, 0) &&
        folder->Text("StoreID") == ArgumentText(place, 1)) {
      return *folder;
    }
  }
  throw AutomationError(kMapiNotFound, "folder");
}

// In the first store, unless another one is named.
AutomationValue FakeMessaging::FindMessage(const AutomationArguments& arguments) {
  const auto storeId = arguments.size() > 1 ? ArgumentText(arguments, 1) : root->Text("StoreID");
  for (auto* const folder : folders_) {
    if (folder->Text("StoreID") != storeId) continue;
    for (const auto& message : Messages(*folder).items) {
      if (message->Text("ID") == ArgumentText(arguments, 0)) return Plain(message);
    }
  }
  throw AutomationError(kMapiNotFound, "GetMessage");
}

}  // namespace quillon::testing
