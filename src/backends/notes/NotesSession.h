// The session with the Notes client, and the mail database in it: one for the process.
//
// What is called of the client's objects. Names are not case-sensitive; arguments are by position,
// those in square brackets are never given. Lists are arrays of variants.
//
//   "Notes.NotesSession", the class that is created:
//     GetDatabase(server, file)      a database, open or not; never Nothing
//     AddressBooks                   list of databases, not open yet
//   database:
//     IsOpen
//     Title, Server, FilePath        of an address book; Title of one that is open
//     OpenMail()                     the mail file of the user
//     Open(server, file)             ("", "") for one of AddressBooks
//     GetView(name)                  a view or folder; Nothing when there is none of the name
//     Views                          list of views and folders
//     CreateDocument()               a document that exists nowhere before Send
//     GetDocumentByUNID(id)          fails with 4091 when there is none
//   view or folder:
//     Name                           as "($Inbox)", "Projects\2026"
//     IsFolder
//     AutoUpdate                     put False, so that a walk is not disturbed
//     Refresh()
//     GetFirstDocument()             Nothing when there is none
//     GetNextDocument(document)      Nothing behind the last one
//     GetAllDocumentsByKey(key, exact True)   of an address book: a collection
//     Remove()                       deletes the folder
//   collection of documents:
//     Count, GetFirstDocument(), GetNextDocument(document)
//   document:
//     UniversalID, HasEmbedded, Items, Created   (Items: list of items)
//     IsValid                        False for what has been deleted meanwhile; may be unknown
//     GetItemValue(name)             list of values; one empty text when there is no such item
//     ReplaceItemValue(name, value)  value: a text or a list of texts
//     GetFirstItem(name)             an item, or Nothing
//     CreateRichTextItem("Body")     a rich-text item
//     GetAttachment(name)            an embedded object, or Nothing
//     SignOnSend, EncryptOnSend      put True
//     SaveMessageOnSend              put True
//     Send(False)
//     GetRead()                      True when read; unknown to clients before version 8
//     MarkRead()                     unknown to clients before version 8
//     Save(True, False, True)        force, no response, marks it read: where MarkRead is unknown
//     Remove(True)
//     PutInFolder(name), RemoveFromFolder(name)
//   item:
//     Type, Text, Values             (Type 1084: attachment, Values holds its name)
//   rich-text item, as an item and:
//     AppendText(text), AddNewLine(count), EmbedObject(1454, "", path)
//   embedded object:
//     Source                         the file name that the sender saw
//     ExtractFile(path)              the file may exist, empty
//
// Items that are written: Form, SendTo, CopyTo, BlindCopyTo, Subject, Body, Principal, ReplyTo,
// Sign, Encrypt, Importance, DeliveryPriority, DeliveryReport, ReturnReceipt, $KeepPrivate. Items
// that are read: Subject, From, SendTo, CopyTo, BlindCopyTo, ReplyTo, PostedDate, DeliveredDate
// (dates), Importance, ReturnReceipt, $MessageID, Body; in address books Form, FullName,
// ListName, InternetAddress, MailAddress. Views: "($Inbox)", in address books "($Users)".
#pragma once

#include <cstdint>
#include <string>

#include "backends/notes/NotesIni.h"
#include "ports/AutomationObject.h"
#include "ports/FileSystem.h"
#include "ports/Workstation.h"

namespace quillon {

class NotesSession {
 public:
  NotesSession(AutomationObjects& objects, Workstation& workstation, FileSystem& files)
      : objects_(objects), workstation_(workstation), files_(files) {}

  // The session object, made when there is none. Throws AutomationError.
  AutomationObjectPtr Object();

  // The open mail database: the user's, or the one that `postOffice` names ("server!!file", or the
  // file alone). A session that has been lost since the last call is made anew. Throws
  // AutomationError.
  AutomationObjectPtr MailDatabase(const std::string& postOffice);

  // Takes a client's session; null for one of our own again.
  void Use(AutomationObjectPtr clients);

  // Forgets session and database: there is nothing to log off from.
  void End();

  // Which of all sessions this is, as long as it is not ended.
  std::uint64_t Number() const noexcept { return number_; }

 private:
  void ForgetLostDatabase();
  AutomationObjectPtr OpenOwnMailFile();
  AutomationObjectPtr OpenMailFile(const NotesMailFile& mailFile);

  AutomationObjects& objects_;
  Workstation& workstation_;
  FileSystem& files_;
  AutomationObjectPtr session_;
  AutomationObjectPtr database_;
  std::string databaseName_;  // the post office that it was opened for
  std::uint64_t number_ = 1;
};

}  // namespace quillon
