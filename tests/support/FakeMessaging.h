// A mail program that speaks Active Messaging, made of recording objects: stores with folders and
// messages, an address book, and what has been sent.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/RecordingAutomation.h"

namespace quillon::testing {

inline constexpr auto kMapiNotFound = static_cast<std::int32_t>(0x8004010FU);

class FakeMessaging {
 public:
  FakeMessaging();

  // Adds a store; the first one holds inbox and outbox.
  RecordingObject& AddStore(const std::string& name);
  RecordingObject& AddFolder(RecordingObject& parent, const std::string& name);
  RecordingObject& AddMessage(RecordingObject& folder, const std::string& subject);
  static void AddRecipient(RecordingObject& message, std::int32_t type, const std::string& name);
  // A file of a message: "WriteToFile" writes its content.
  void AddAttachment(RecordingObject& message, std::int32_t type, const std::string& name,
                     const std::string& content);

  static RecordingCollection& Part(RecordingObject& object, const std::string& collection);
  RecordingCollection& Messages(RecordingObject& folder) { return Part(folder, "Messages"); }
  std::vector<std::string> FolderNames(RecordingObject& folder);

  AutomationRecord record;
  RecordingObjects objects;
  RecordingObjectPtr session;
  RecordingObject* root = nullptr;  // of the first store
  RecordingObject* inbox = nullptr;
  RecordingObject* outbox = nullptr;
  std::vector<RecordingObjectPtr> sent;
  int sessions = 0;  // that are logged on

 private:
  template <typename Object = RecordingObject>
  std::shared_ptr<Object> Make(const std::string& name) {
    auto made = std::make_shared<Object>(record, name);
    held_.push_back(made);
    return made;
  }
  void MakeSession();
  RecordingObjectPtr MakeFolder(RecordingObject* parent, const std::string& name,
                                const std::string& storeId);
  RecordingObjectPtr MakeMessage(RecordingCollection& home, const std::string& storeId);
  RecordingObjectPtr MakeAttachment();
  void MakeMovable(RecordingObject& message, RecordingCollection& home);
  RecordingObject& FolderOf(const AutomationArguments& place);
  AutomationValue FindMessage(const AutomationArguments& arguments);
  std::string NewId() { return "id" + std::to_string(++ids_); }

  std::vector<std::shared_ptr<RecordingObject>> held_;  // objects know each other by address
  std::vector<RecordingObject*> folders_;
  std::vector<RecordingObject*> stores_;
  int ids_ = 0;
};

}  // namespace quillon::testing
