"""The desk as "MAPI.Session": scripts that use the object tree as they would use the real one."""

import random
import shutil
import unittest

from scripting import ScriptTest, install_desk
import winetest

# Sessions, and the number that a statement failed with.
PRELUDE = """
Sub Failed(what, expected)
  If Hex(Err.Number) <> expected Then
    WScript.Echo what & ": " & Hex(Err.Number) & " " & Err.Description & " instead of " & expected
  End If
  Err.Clear
End Sub
Function SessionOf(name)
  Set SessionOf = CreateObject("MAPI.Session")
  SessionOf.Logon name, "secret", False
End Function
Function NewMail(session, subject, recipient)
  Set NewMail = session.Outbox.Messages.Add(subject)
  If recipient <> "" Then NewMail.Recipients.Add(recipient).Resolve
End Function
Function Subjects(messages)
  Dim message
  Subjects = ""
  Set message = messages.GetFirst
  Do Until message Is Nothing
    Subjects = Subjects & message.Subject & ";"
    Set message = messages.GetNext
  Loop
End Function
Function NamesIn(folders)
  Dim folder
  NamesIn = ""
  Set folder = folders.GetFirst
  Do Until folder Is Nothing
    NamesIn = NamesIn & folder.Name & ";"
    Set folder = folders.GetNext
  Loop
End Function
"""


def setUpModule():
    DeskTest.wine = unittest.enterModuleContext(winetest.WinePrefix())
    DeskTest.store = install_desk(DeskTest.wine)


class DeskTest(ScriptTest, unittest.TestCase):
    def setUp(self):
        self.files = self.wine.drive_c / "files"
        for folder in (self.store.place, self.files):  # the first call makes a new store
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()

    def run_desk(self, text, *arguments):
        self.run_checks(self.wine, PRELUDE + text, *arguments)


class Mail(DeskTest):
    def test_a_message_with_two_files_is_read_back(self):
        one = random.Random(7).randbytes(70001)
        (self.files / "one.bin").write_bytes(one)
        (self.files / "two.txt").write_bytes(b"\r\n.\r\n\x1a\x00 end")
        self.run_desk(r"""
Dim ann, bob, message, recipient, file
Set ann = SessionOf("ann")
Set message = ann.Outbox.Messages.Add("Report", "two" & vbCrLf & "lines", "IPM.Note", 2)
message.ReadReceipt = True
message.DeliveryReceipt = True
message.Fields.Add &H00360003, 2
message.Fields.Add &H0C08000B, "True"
message.Fields.Add "Room", 8, "blue"
message.Recipients.Add("bob", "", 1).Resolve
Set recipient = message.Recipients.Add
recipient.Type = 2
recipient.Name = "Carl C."
recipient.Address = "carl@elsewhere.example"
message.Recipients.Add "Samantha Stone", , 3
Same "not yet", False, message.Recipients.Resolved
Set file = message.Attachments.Add
file.Type = 1
file.Position = 0
file.Source = "C:\files\one.bin"
file.Name = "first one.bin"
message.Attachments.Add("second.txt", 4).ReadFromFile "C:\files\two.txt"
Same "files", CLng(2), message.Attachments.Count
message.Update
Same "in the outbox", "Report;", Subjects(ann.Outbox.Messages)
message.Send True, False
Same "has left", CLng(0), ann.Outbox.Messages.Count
Dim all
Set all = ann.GetInfoStore(ann.Inbox.StoreID).RootFolder.Folders
Same "kept", "Report;", Subjects(all.Item("Sent Items").Messages)
Same "its bcc", CLng(3), all("Sent Items").Messages(1).Recipients.Count

Set bob = SessionOf("bob")
Set message = bob.Inbox.Messages.GetFirst
Same "subject", "Report", message.Subject
Same "text", "two" & vbCrLf & "lines", message.Text
Same "class", "IPM.Note", message.Type
Same "unread", True, message.Unread
Same "sent", True, message.Sent
Same "receipt", True, message.ReadReceipt
Same "delivery", True, message.DeliveryReceipt
Same "importance", CLng(2), message.Importance
Same "sensitivity", CLng(2), message.Fields(&H00360003).Value
Same "report", True, message.Fields.Item(&H0C08000B).Value
Same "own field", "blue", message.Fields("room").Value
Same "its tag", CLng(&H0C08000B), message.Fields(&H0C08000B).ID
Same "topic", "Report", message.ConversationTopic
Same "date", True, Abs(Now - message.TimeSent) < 1
Same "sender", "Ann Archer", message.Sender.Name
Same "its address", "ann@desk.example", message.Sender.Address
Same "its type", "SMTP", message.Sender.Type
Same "bcc is hidden", CLng(2), message.Recipients.Count
Same "to", "Bob Baker", message.Recipients(1).Name
Same "to address", "SMTP:bob@desk.example", message.Recipients(1).Address
Same "cc", CLng(2), message.Recipients(2).Type
Same "cc name", "Carl C.", message.Recipients("carl c.").Name
Same "cc address", "SMTP:carl@elsewhere.example", message.Recipients(2).Address
Set file = message.Attachments(2)
Same "name", "second.txt", file.Name
Same "position", CLng(4), file.Position
Same "type", CLng(1), file.Type
Same "index", CLng(2), file.Index
file.WriteToFile "C:\files\read two"
message.Attachments(1).WriteToFile "C:\files\read two"
file.WriteToFile "C:\files\read two"
message.Attachments(1).WriteToFile "C:\files\read one"
message.Unread = False
Same "not said yet", True, bob.GetMessage(message.ID).Unread
message.Update
Same "said", False, bob.GetMessage(message.ID, message.StoreID).Unread
""")
        self.assertEqual(one, (self.files / "read one").read_bytes())
        self.assertEqual((self.files / "two.txt").read_bytes(),
                         (self.files / "read two").read_bytes())
        self.assertEqual([], list((self.store.place / "making").iterdir()))
        self.assertEqual(1, len(self.store.messages("Outside", "")))

    def test_texts_of_any_characters_and_length(self):
        self.run_checks(self.wine, r"""
var mail = new ActiveXObject("MAPI.Session");
mail.Logon("ann", "secret");
var subject = "Gr\u00FC\u00DFe \u65E5\u672C \uD83D\uDE00\t\\n";
var text = "\r\nline: one\r\n\r\n" + new Array(5001).join("0123456789\u20AC");
var message = mail.Outbox.Messages.Add(subject, text);
message.Recipients.Add("bob").Resolve();
message.Recipients.Add("J\u00F6rg <x>", "SMTP:joerg@\u00FC.example", 2);
message.Send();
var bob = new ActiveXObject("MAPI.Session");
bob.Logon("bob", "secret");
message = bob.Inbox.Messages.GetFirst();
same("subject", subject, message.Subject);
same("text", text, message.Text);
same("recipient", "J\u00F6rg <x>", message.Recipients.Item(2).Name);
same("address", "SMTP:joerg@\u00FC.example", message.Recipients.Item(2).Address);
message = null;
bob = null;
""", engine="js")

    def test_half_made_messages_stay(self):
        self.run_desk(r"""
Dim ann, message
Set ann = SessionOf("ann")
Set message = ann.Outbox.Messages.Add("never sent")
On Error Resume Next
message.Text = message.ID
Failed "no identifier before Update", "8004010F"
message.Send
Failed "to nobody", "80040607"
message.Recipients.Add "Sam"
message.Send
Failed "ambiguous", "80040700"
message.Recipients(1).Name = "nobody"
message.Send
Failed "unknown", "8004010F"
message.Attachments.Add "x", 0, 1, "C:\files\none"
Failed "no file", "8004010F"
Same "no half file", CLng(0), message.Attachments.Count
message.Attachments.Add "x", 0, 3
Failed "an object", "80040102"
message.Attachments.Add("x", 0, 1, "C:\windows\win.ini").WriteToFile "C:\none\x"
Failed "no folder", "80040116"
message.Attachments.Add.WriteToFile "C:\files\x"
Failed "no bytes", "8004010F"
message.Attachments(1).ReadFromFile "C:\windows"
Failed "a folder", "8004010F"
Set message = Nothing
On Error GoTo 0
Same "still there", "never sent;", Subjects(ann.Outbox.Messages)
""")

    def test_posts_and_the_dialog(self):
        self.store.dialog("change subject from the window")
        self.run_desk(r"""
Dim ann, bob, message, store, index, reply
Set ann = SessionOf("ann")
Set store = ann.InfoStores("public folders")
Same "stores", CLng(2), ann.InfoStores.Count
Set message = store.RootFolder.Folders.Add("News").Messages.Add("first", "text")
index = ann.CreateConversationIndex
Same "index", CLng(44), Len(index)
reply = ann.CreateConversationIndex(index)
Same "answer", index & "#", Left(reply, 44) & Left("#", Len(reply) - 53)
message.ConversationIndex = reply
message.TimeReceived = Now
message.Update
message.Send , False
Set bob = SessionOf("bob")
Set message = bob.InfoStores.Item(1).RootFolder.Folders(1).Messages(1)
Same "post", "first", message.Subject
Same "by", "Ann Archer", message.Sender.Name
Same "conversation", reply, message.ConversationIndex
NewMail(ann, "asked", "bob").Send True, True
Same "changed", "from the window;", Subjects(bob.Inbox.Messages)
On Error Resume Next
NewMail(ann, "x", "").Recipients.Add("sam").Resolve True
Failed "nobody was picked", "80040113"
NewMail(ann, "x", "").Recipients.Add("sam").Resolve False
Failed "nobody was asked", "80040700"
index = ann.CreateConversationIndex("0102")
Failed "no index", "80070057"
index = message.Recipients(1)
Failed "no recipient", "8004010F"
""")


    def test_a_user_who_cancels_adds_and_picks(self):
        for word, number, subjects in (("cancel", "80040113", ""), ("add bob", "0", "to nobody;")):
            self.store.dialog(word)
            self.run_desk(f"""
Dim message
Set message = NewMail(SessionOf("ann"), "to nobody", "")
On Error Resume Next
message.Send True, True
Failed "{word}", "{number}"
Same "{word}", "{subjects}", Subjects(SessionOf("bob").Inbox.Messages)
""")
        self.store.dialog("pick 2")
        self.run_desk("""
Dim recipient
Set recipient = NewMail(SessionOf("ann"), "x", "").Recipients.Add("sam")
recipient.Resolve
Same "second", "Sam Smithers", recipient.Name
""")


class Folders(DeskTest):
    def test_made_copied_moved_and_deleted(self):
        self.run_desk(r"""
Dim ann, root, work, deep, copy, inbox
Set ann = SessionOf("ann")
Set root = ann.GetFolder("", "")
Set inbox = ann.Inbox
Same "at first", "Deleted Items;Inbox;Outbox;Sent Items;", NamesIn(root.Folders)
Set work = root.Folders.Add("Work")
Set deep = work.Folders.Add("Deep \ one: <*>")
deep.Messages.Add "in deep"
work.Messages.Add "in work"
Same "its parent", root.ID, work.FolderID
Same "found", "Deep \ one: <*>", ann.GetFolder(deep.ID, deep.StoreID).Name
Set copy = work.CopyTo(inbox.ID, inbox.StoreID, "Copy")
Same "whole copy", "in deep;", Subjects(copy.Folders(1).Messages)
Same "its messages", "in work;", Subjects(copy.Messages)
Set copy = work.CopyTo(inbox.ID, , "Flat", False)
Same "flat copy", "[]in work;", "[" & NamesIn(copy.Folders) & "]" & Subjects(copy.Messages)
Same "same", True, work.IsSameAs(ann.GetFolder(work.ID))
Same "not same", False, work.IsSameAs(copy)
work.Name = "Play"
Same "not yet", "Copy;Flat;", NamesIn(inbox.Folders)
work.Update
Set deep = deep.MoveTo(root.ID, root.StoreID, "")
Same "moved", "Deep \ one: <*>;Deleted Items;Inbox;Outbox;Play;Sent Items;", NamesIn(root.Folders)
Same "with it", "in deep;", Subjects(deep.Messages)
On Error Resume Next
root.Folders.Add "play"
Failed "twice", "80040604"
root.Folders.Add ""
Failed "no name", "80070057"
inbox.CopyTo copy.ID
Failed "into itself", "8004060B"
inbox.Delete
Failed "the inbox stays", "80070005"
deep.MoveTo "4711"
Failed "nowhere", "8004010F"
Set copy = ann.GetFolder("../..")
Failed "no folder", "8004010F"
work.Delete
Failed "goes", "0"
Set copy = work.Folders(1)
Failed "gone", "8004010F"
root.Folders.Sort 2
Set copy = root.Folders.GetLast
Same "last", "Sent Items", copy.Name
""")

    def test_walked_while_they_change(self):
        self.run_desk(r"""
Dim ann, folders, folder, messages, message, i, seen
Set ann = SessionOf("ann")
Set folders = ann.Inbox.Folders
Set messages = ann.Inbox.Messages
For i = 1 To 5
  folders.Add "f" & i
  messages.Add "m" & i
Next
Set folder = folders.GetFirst
Do Until folder Is Nothing
  seen = seen & folder.Name
  folder.Delete
  If seen = "f1" Then folders("f3").Delete
  Set folder = folders.GetNext
Loop
Same "folders", "f1f2f4f5", seen
seen = ""
Set message = messages.GetFirst
Do Until message Is Nothing
  seen = seen & message.Subject
  message.Delete
  If seen = "m1" Then messages(1).Delete
  If seen = "m1" Then messages.Add "late"
  Set message = messages.GetNext
Loop
Same "messages", "m1m3m4m5", seen
Same "behind the end", True, messages.GetNext Is Nothing
Same "backwards", True, messages.GetPrevious Is Nothing
Same "left", "late;", Subjects(messages)
Same "last", "late", messages.GetLast.Subject
Same "none before", True, messages.GetPrevious Is Nothing
Same "again", "late", messages.GetNext.Subject
seen = ""
messages.Add "later"
For Each message In messages
  seen = seen & message.Subject
  messages.Add "after"
  message.Delete
Next
Same "for each", "latelater", seen
Same "what came meanwhile", "after;after;", Subjects(messages)
For Each folder In ann.GetFolder("").Folders
  seen = seen & folder.Name
Next
Same "folders, too", "latelaterDeleted ItemsInboxOutboxSent Items", seen
""")


class Messages(DeskTest):
    def test_filtered_and_sorted(self):
        self.run_desk(r"""
Sub Put(inbox, subject, day, class_, unread)
  Dim message
  Set message = inbox.Messages.Add(subject, "text of " & subject, class_)
  message.Unread = unread
  message.TimeReceived = CDate(day)
  message.Update
End Sub
Dim ann, inbox, messages, other
Set ann = SessionOf("ann")
Set inbox = ann.Inbox
Put inbox, "b", 36526.25, "IPM.Note", True
Put inbox, "c", 36530, "IPM.Other", False
Put inbox, "A", 36528, "IPM.Note", True
Set messages = inbox.Messages
Same "as they came", "b;c;A;", Subjects(messages)
messages.Sort
Same "by date", "b;A;c;", Subjects(messages)
messages.Sort 2, &H0037001E
Same "by subject", "c;b;A;", Subjects(messages)
Same "item", "b", messages(2).Subject
messages.Filter.Unread = True
Same "unread", "b;A;", Subjects(messages)
Same "count", CLng(2), messages.Count
Same "reads back", True, messages.Filter.Unread
messages.Filter.Not = True
Same "read", "c;", Subjects(messages)
Set other = inbox.Messages
Same "another's", CLng(3), other.Count
other.Filter = messages.Filter
Same "given on", "c;", Subjects(other)
messages.Filter = Nothing
Same "taken off", CLng(3), messages.Count
messages.Filter.Subject = "a"
messages.Filter.Type = "ipm.other"
Same "and", "", Subjects(messages)
messages.Filter.Or = True
Same "or", "c;A;", Subjects(messages)
messages.Filter.Type = Empty
Same "no more", "A;", Subjects(messages)
Set messages = inbox.Messages
messages.Filter.TimeFirst = CDate(36527)
messages.Filter.TimeLast = CDate(36528)
Same "days", "A;", Subjects(messages)
Set messages = inbox.Messages
Same "class", "c", messages.GetLast("IPM.Other").Subject
On Error Resume Next
messages.Sort 1, &H10000003
Failed "sort", "80040117"
messages.Sort 3
Failed "order", "80070057"
messages.Filter = inbox
Failed "no filter", "D"
Set other = messages.Item(4)
Failed "no such item", "8004010F"
Set other = messages.Item("b")
Failed "no names", "D"
""")

    def test_moved_copied_and_deleted(self):
        self.run_desk(r"""
Dim ann, deleted, message, copy, news
Set ann = SessionOf("ann")
Set deleted = ann.GetFolder("").Folders("Deleted Items")
Set message = ann.Inbox.Messages.Add("one", "text")
message.Attachments.Add "f", 0, 1, "C:\windows\win.ini"
message.Update
Set copy = message.CopyTo(deleted.ID, deleted.StoreID)
Same "copy", deleted.ID & CLng(1), copy.FolderID & copy.Attachments.Count
Set news = ann.InfoStores(1).RootFolder
Set copy = copy.MoveTo(news.ID, news.StoreID)
Same "moved", "one;", Subjects(news.Messages)
copy.Attachments(1).WriteToFile "C:\files\f"
Same "gone there", CLng(0), deleted.Messages.Count
Same "it stays", "one;", Subjects(ann.Inbox.Messages)
Dim again
Set again = ann.GetMessage(message.ID)
Same "same", True, again.IsSameAs(message)
message.Delete
On Error Resume Next
again.Update
Failed "deleted by another", "8004010A"
again.CopyTo deleted.ID
Failed "copy of nothing", "8004010A"
Set again = message.Attachments
Failed "deleted", "80040108"
Set again = ann.GetMessage(message.ID)
Failed "no identifier", "80040108"
Set again = ann.GetMessage(copy.ID)
Failed "in another store", "8004010F"
Set again = ann.GetMessage("..\..\account.txt")
Failed "no way out", "8004010F"
""")


class Directory(DeskTest):
    def test_recipients_and_entries(self):
        self.run_desk(r"""
Dim ann, entries, entry, message, recipients, recipient, names
Set ann = SessionOf("ann")
Same "lists", CLng(1), ann.AddressLists.Count
Set entries = ann.AddressLists(1).AddressEntries
Set entry = entries.GetFirst
Do Until entry Is Nothing
  names = names & entry.Name & "<" & entry.Type & ":" & entry.Address & ">;"
  Set entry = entries.GetNext
Loop
Same "all", True, InStr(names, "Bob Baker<SMTP:bob@desk.example>;") > 0
Same "a fax", True, InStr(names, "<FAX:5551234>;") > 0
Set entry = ann.GetAddressEntry(entries("bob baker").ID)
Same "again", True, entry.IsSameAs(entries("Bob Baker"))
Same "me", "ann@desk.example", ann.CurrentUser.Address
Same "compared", True, ann.CompareIDs(entry.ID, entries("Bob Baker").ID)
Set message = ann.Outbox.Messages.Add
Set recipients = message.Recipients
Same "by entry", "Bob Baker", recipients.Add(, , 1, entry.ID).Name
Set recipient = recipients.Add("me@home.example", , 3)
recipients.Add "samantha"
recipients.Add "Sam"
recipients.Add "x", "FAX:123"
On Error Resume Next
recipients.Resolve False
Failed "one of them", "80040700"
Same "the others", "SMTP:me@home.example", recipient.Address
Same "whole name", "Samantha Stone", recipients(3).Name
Same "typed", "FAX:123", recipients(5).Address
Same "not all", False, recipients.Resolved
Set entry = recipients(4).AddressEntry
Failed "no entry", "8004010F"
recipient.Delete
Failed "delete", "0"
Same "one less", CLng(4), recipients.Count
recipients(3).Address = "sam@x.example"
Same "all", True, recipients.Resolved
names = recipient.Name
Failed "deleted", "80040108"
recipients.Add "x", , 4
Failed "no class", "80070057"
recipients(1).Type = 0
Failed "no class either", "80070057"
recipients(1).Index = 2
Failed "cannot be put", "1B6"
Set entry = ann.GetAddressEntry("zz")
Failed "no identifier", "8004010F"
Set recipient = recipients(1)
recipients.Delete
names = recipient.Name
Failed "all deleted", "80040108"
message.Fields.Add &H0037001E, "by its tag"
Same "subject", "by its tag", message.Subject
message.Fields.Add &H0C1A001E, "somebody"
Failed "the sender", "80070005"
message.Fields.Add &H66001003, 1
Failed "no type", "80070057"
message.Fields.Add &H66000003, "x"
Failed "no number", "D"
Same "none", CLng(0), message.Fields.Count
""")


class Sessions(DeskTest):
    def test_logging_on_and_off(self):
        self.run_desk(r"""
Dim session, other, inbox, message
Set session = CreateObject("MAPI.Session")
Same "version", "1.1", session.Version
Same "class", CLng(0), session.Class
On Error Resume Next
Set inbox = session.Inbox
Failed "too early", "80040605"
session.Logoff
Failed "never logged on", "80040605"
session.Logon "ann", "Secret"
Failed "password", "80040111"
session.Logon "joe", "secret"
Failed "name", "80040111"
session.Logon "", "secret"
Failed "default", "0"
Same "its name", "ann", session.Name
session.Logon "bob", "secret"
Failed "twice", "80040112"
Same "still", "ann", session.Name
Set inbox = session.Inbox
Set message = inbox.Messages.Add("x")
Same "session of a child", "ann", message.Session.Name
Same "parent of a child", "Inbox", inbox.Messages.Parent.Name
Same "class of a child", CLng(3), message.Class
session.DeliverNow
session.Logoff
message.Subject = "y"
Failed "after logoff", "80040605"
session.Logon , , , , , , "server" & vbLf & "bob" & vbLf & "anon"
Failed "anonymous", "0"
Same "mailbox", "bob", session.Name
message.Subject = "y"
Failed "of another logon", "80040108"
Set other = CreateObject("MAPI.Session")
other.Logon "joe", "secret", , , , , "server" & vbLf & "ann"
Failed "in place of a profile", "0"
Same "both", "annbob", other.Name & session.Name
other.Logoff
other.Logon , "secret", , , , , "ann"
Failed "no server", "80040111"
other.Logon "ann", "secret", "perhaps"
Failed "no flag", "D"
""")
        self.assertIn("Session.Logon ann, ***", self.store.calls())
        self.assertNotIn("secret", " ".join(self.store.calls()).lower())

    def test_faults(self):
        self.store.faults("""Version 1.0
Session.Logon#1 0x80040111
Recipients.Add nothing
Message.Send 0x80040607
Message.Subject= 0x80070005
Session.Outbox#2 25
Messages.GetNext nothing
Folder.Name what
Session.DeliverNow pump 100""")
        self.run_desk(r"""
Dim session, message, none
Set session = CreateObject("MAPI.Session")
Same "version", "1.0", session.Version
On Error Resume Next
session.Logon "ann", "secret"
Failed "first time", "80040111"
session.Logon "ann", "secret"
Failed "second time", "0"
Set message = session.Outbox.Messages.Add("x")
Set none = session.Outbox
Failed "second outbox", "19"
Set none = message.Recipients.Add("bob")
Failed "no failure", "0"
Same "nothing", True, none Is Nothing
Same "not added", CLng(0), message.Recipients.Count
message.Subject = "y"
Failed "put", "80070005"
Same "not put", "x", message.Subject
message.Send
Failed "send", "80040607"
message.Update
Same "walk", "x;", Subjects(session.Outbox.Messages)
session.DeliverNow
Failed "after messages", "0"
none = session.Outbox.Name
Failed "no word", "80004005"
""")


class OtherFaces(DeskTest):
    """What Simple MAPI sends is read here, and the other way round."""

    def two_files(self):
        (self.files / "one.bin").write_bytes(random.Random(9).randbytes(40000))
        (self.files / "two.txt").write_bytes(b"\r\n\x1a\x00")
        return self.files / "one.bin", self.files / "two.txt"

    def run_faces(self, *words):
        done = self.wine.run(winetest.CLIENTS / "MailFaces.exe", *words)
        self.assertEqual((0, ""), (done.returncode, done.output))

    def test_simple_mapi_to_automation(self):
        files = self.two_files()
        self.run_faces("send", *files)
        self.run_checks(self.wine, r"""
var mail = new ActiveXObject("MAPI.Session");
mail.Logon("bob", "secret");
var message = mail.Inbox.Messages.GetFirst();
same("subject", "Price 5\u20AC", message.Subject);
same("text", "First line\r\n\r\nsecond \xE9", message.Text);
same("receipt", true, message.ReadReceipt);
same("sender", "Ann Archer", message.Sender.Name);
same("cc", "SMTP:stranger@outside.example", message.Recipients.Item(2).Address);
same("shown", "shown.bin", message.Attachments.Item(1).Name);
same("placed", 3, message.Attachments.Item(1).Position);
for (var i = 1; i <= message.Attachments.Count; ++i)
  message.Attachments.Item(i).WriteToFile("C:\\files\\read" + i);
""", engine="js")
        for number, file in enumerate(files, 1):
            self.assertEqual(file.read_bytes(), (self.files / f"read{number}").read_bytes())

    def test_automation_to_simple_mapi(self):
        files = self.two_files()
        self.run_checks(self.wine, r"""
var mail = new ActiveXObject("MAPI.Session");
mail.Logon("ann", "secret");
var message = mail.Outbox.Messages.Add("Price 5\u20AC", "First line\r\n\r\nsecond \xE9");
message.ReadReceipt = true;
message.Recipients.Add("bob").Resolve();
message.Recipients.Add("stranger", "stranger@outside.example", 2);
message.Attachments.Add("shown.bin", 3, 1, "C:\\files\\one.bin");
message.Attachments.Add("two.txt", -1, 1, "C:\\files\\two.txt");
message.Send();
""", engine="js")
        self.run_faces("read", *files)


class Programs(DeskTest):
    """What scripts cannot do."""

    def run_caller(self, *arguments):
        done = self.wine.run(winetest.CLIENTS / "DeskCaller.exe", *arguments)
        self.assertEqual((0, "desk: ok\n"), (done.returncode, done.output))

    def test_named_arguments_and_lifetime(self):
        self.run_caller()

    def test_rich_text(self):
        self.run_caller("rich", r"{\rtf1 Gr\'fc\'dfe}")
        [message] = self.store.messages("ann", "Outbox")
        self.assertEqual(r"{\rtf1 Gr\'fc\'dfe}", message.rich_text)


if __name__ == "__main__":
    unittest.main()
