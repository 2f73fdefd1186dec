// A Notes client made of recording objects: a session, the user's mail database with folders and
// documents, an address book, and what has been sent.
#pragma once

#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/RecordingAutomation.h"

namespace quillon::testing {

inline constexpr auto kNoDocumentError = static_cast<std::int32_t>(0x80040FFBU);  // 4091

using Values = std::vector<AutomationValue>;

class FakeDocument final : public RecordingObject {
 public:
  explicit FakeDocument(AutomationRecord& record) : RecordingObject(record, "Document") {
    properties["IsValid"] = true;
    properties["HasEmbedded"] = false;
    properties["Items"] = Values();
    properties["Created"] = AutomationDate{40000};
    methods["GetItemValue"] = [this](const auto& arguments) -> AutomationValue {
      const auto found = items.find(TextOf(arguments.at(0).value));
      if (found == items.end()) return Values{""};
      return std::holds_alternative<Values>(found->second) ? found->second : Values{found->second};
    };
    methods["ReplaceItemValue"] = [this](const auto& arguments) -> AutomationValue {
      items[TextOf(arguments.at(0).value)] = arguments.at(1).value;
      return {};
    };
    methods["GetRead"] = [this](const auto&) -> AutomationValue { return read; };
    methods["MarkRead"] = [this](const auto&) -> AutomationValue {
      read = true;
      return {};
    };
  }

  std::map<std::string, AutomationValue, CaseLess> items;
  bool read = false;
};

using FakeDocumentPtr = std::shared_ptr<FakeDocument>;

class FakeView final : public RecordingObject {
 public:
  FakeView(AutomationRecord& record, const std::string& name, bool isFolder)
      : RecordingObject(record, "View") {
    properties["Name"] = name;
    properties["IsFolder"] = isFolder;
    properties["Refresh"] = {};
    methods["GetFirstDocument"] = [this](const auto&) { return At(0); };
    methods["GetNextDocument"] = [this](const auto& arguments) { return After(arguments); };
    methods["GetAllDocumentsByKey"] = [this](const auto& arguments) -> AutomationValue {
      auto matches = std::make_shared<FakeView>(Record(), "", false);
      for (const auto& document : documents) {
        const auto key = document->Text("Key");
        if (EqualsIgnoreCase(key, TextOf(arguments.at(0).value))) {
          matches->documents.push_back(document);
        }
      }
      return AutomationObjectPtr(matches);
    };
  }

  std::vector<FakeDocumentPtr> documents;
  bool endless = false;

 private:
  AutomationValue At(std::size_t index) const {
    if (endless) index = std::min(index, documents.size() - 1);
    return AutomationObjectPtr(index < documents.size() ? documents[index] : nullptr);
  }
  AutomationValue After(const AutomationArguments& arguments) const {
    const auto found = std::find(documents.begin(), documents.end(), ObjectOf(arguments[0].value));
    if (found == documents.end()) throw AutomationError(kNoDocumentError, "GetNextDocument");
    return At(static_cast<std::size_t>(found - documents.begin()) + 1);
  }
};

using FakeViewPtr = std::shared_ptr<FakeView>;

class FakeNotes {
 public:
  FakeNotes() {
    MakeDatabase();
    session->methods["GetDatabase"] = [this](const auto& arguments) -> AutomationValue {
      const auto name = TextOf(arguments.at(0).value) + "!!" + TextOf(arguments.at(1).value);
      database->properties["IsOpen"] = name == existing;
      return AutomationObjectPtr(database);
    };
    session->properties["AddressBooks"] = Values{AutomationObjectPtr(book)};
    book->properties = {{"IsOpen", false},         {"Open", {}},
                        {"Title", "Address Book"}, {"Server", ""},
                        {"FilePath", "names.nsf"}, {"GetView", AutomationObjectPtr(users)}};
    objects.classes["Notes.NotesSession"] = session;
  }

  FakeViewPtr AddView(const std::string& name, bool isFolder) {
    views.push_back(std::make_shared<FakeView>(record, name, isFolder));
    return views.back();
  }

  FakeDocument& AddDocument(FakeView& view, const std::string& subject, double day) {
    auto document = std::make_shared<FakeDocument>(record);
    document->properties["UniversalID"] = "ID " + subject;
    document->items["Subject"] = subject;
    document->items["PostedDate"] = AutomationDate{day};
    auto* const raw = document.get();
    for (const auto* const method : {"Remove", "PutInFolder", "RemoveFromFolder", "Save"}) {
      document->properties[method] = {};
    }
    document->methods["GetFirstItem"] = [this, raw](const auto&) -> AutomationValue {
      if (!raw->properties.contains("Body")) return AutomationObjectPtr();
      auto item = Make("Item");
      item->properties["Text"] = raw->properties["Body"];
      return AutomationObjectPtr(item);
    };
    document->methods["GetAttachment"] = [this, raw](const auto& arguments) -> AutomationValue {
      return Attachment(*raw, TextOf(arguments.at(0).value));
    };
    view.documents.push_back(document);
    return *raw;
  }

  // A file of a message: the client's name for it, the sender's, and its content.
  void AddFile(FakeDocument& document, const std::string& name, const std::string& source,
               const std::string& content) {
    auto item = Make("Item");
    item->properties["Type"] = 1084;
    item->properties["Values"] = Values{name};
    std::get<Values>(document.properties["Items"]).emplace_back(AutomationObjectPtr(item));
    document.properties["HasEmbedded"] = true;
    document.properties["file " + name] = source + "|" + content;
  }

  void AddUser(const std::string& key, const std::string& fullName, const std::string& address) {
    auto document = std::make_shared<FakeDocument>(record);
    document->properties["Key"] = key;
    document->properties["UniversalID"] = "ID " + fullName;
    document->items = {{"FullName", fullName}, {"InternetAddress", address}};
    users->documents.push_back(document);
  }

  AutomationRecord record;
  RecordingObjects objects;
  RecordingObjectPtr session = Make("Session");
  RecordingObjectPtr database = Make("Database");
  RecordingObjectPtr book = Make("AddressBook");
  FakeViewPtr users = std::make_shared<FakeView>(record, "($Users)", false);
  std::vector<FakeViewPtr> views;
  FakeViewPtr inbox = AddView("($Inbox)", true);
  std::string existing;  // the database that GetDatabase opens, as "server!!file"
  bool hasMailFile = true;
  std::vector<FakeDocumentPtr> sent;
  std::string body;                   // of the message that is made
  std::vector<std::string> embedded;  // its files, as path|content

 private:
  RecordingObjectPtr Make(const std::string& name) {
    return std::make_shared<RecordingObject>(record, name);
  }

  void MakeDatabase() {
    database->methods["OpenMail"] = [this](const auto&) -> AutomationValue {
      database->properties["IsOpen"] = hasMailFile;
      return {};
    };
    database->methods["GetView"] = [this](const auto& arguments) -> AutomationValue {
      for (const auto& view : views) {
        if (EqualsIgnoreCase(view->Text("Name"), TextOf(arguments.at(0).value))) {
          return AutomationObjectPtr(view);
        }
      }
      return AutomationObjectPtr();
    };
    database->methods["Views"] = [this](const auto&) -> AutomationValue {
      Values all;
      for (const auto& view : views) all.emplace_back(AutomationObjectPtr(view));
      return all;
    };
    database->methods["GetDocumentByUNID"] = [this](const auto& arguments) -> AutomationValue {
      for (const auto& view : views) {
        for (const auto& document : view->documents) {
          if (document->Text("UniversalID") == TextOf(arguments.at(0).value)) {
            return AutomationObjectPtr(document);
          }
        }
      }
      throw AutomationError(kNoDocumentError, "Invalid universal id");
    };
    database->methods["CreateDocument"] = [this](const auto&) { return NewDocument(); };
  }

  AutomationValue NewDocument() {
    auto document = std::make_shared<FakeDocument>(record);
    body.clear();
    embedded.clear();
    document->methods["CreateRichTextItem"] = [this](const auto&) -> AutomationValue {
      return AutomationObjectPtr(NewBody());
    };
    document->methods["Send"] = [this, held = std::weak_ptr(document)](const auto&) {
      sent.push_back(held.lock());
      return AutomationValue();
    };
    return AutomationObjectPtr(document);
  }

  RecordingObjectPtr NewBody() {
    auto item = Make("RichText");
    item->methods["AppendText"] = [this](const auto& arguments) {
      body += TextOf(arguments.at(0).value);
      return AutomationValue();
    };
    item->methods["AddNewLine"] = [this](const auto& arguments) {
      body.append(static_cast<std::size_t>(NumberOf(arguments.at(0).value)), '\n');
      return AutomationValue();
    };
    item->methods["EmbedObject"] = [this](const auto& arguments) -> AutomationValue {
      const auto path = TextOf(arguments.at(2).value);
      std::ifstream file(path, std::ios::binary);
      const std::string content{std::istreambuf_iterator<char>(file), {}};
      embedded.push_back(path.substr(path.find_last_of("/\\") + 1) + "|" + content);
      return AutomationObjectPtr(Make("EmbeddedObject"));
    };
    return item;
  }

  AutomationValue Attachment(FakeDocument& document, const std::string& name) {
    const auto file = Split(document.Text("file " + name), "|");
    auto attachment = Make("EmbeddedObject");
    attachment->properties["Source"] = file.at(0);
    attachment->methods["ExtractFile"] = [content = file.at(1)](const auto& arguments) {
      std::ofstream(TextOf(arguments.at(0).value), std::ios::binary) << content;
      return AutomationValue();
    };
    return AutomationObjectPtr(attachment);
  }
};

}  // namespace quillon::testing
