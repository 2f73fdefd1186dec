' Calls to the Notes client that fail, with one message in the inbox. Argument: a file to attach.
Dim files, session, system, text
Set files = CreateObject("Scripting.FileSystemObject")
NewServer 11
mail.LoadMessageHeaders
On Error Resume Next

' A number of the client's own, with its words; anything else has no public number.
Headers "NotesDatabase.GetView 4060", 9060
Fault "NotesDatabase.GetView 4063"
mail.LoadMessageHeaders
RaisedText "its words", "Database has not been opened yet"
Headers "NotesView.GetFirstDocument 6999", 11999
Headers "NotesView.GetFirstDocument 0x80040F9F", 2000
Headers "NotesDocument.UniversalID 0x8002000E", 2000
Headers "NotesView.GetFirstDocument crash", 2000
Headers "NotesView.GetFirstDocument nothing", 0
Same "nothing there", CLng(0), mail.messageCount
Headers "", 0
Same "all well again", CLng(1), mail.messageCount

' The client dies: the next call begins with a new one.
Headers "NotesView.GetNextDocument 0x800706BA", 2002
Headers "", 0
Headers "NotesDatabase.IsOpen 0x80010108", 2002
Headers "", 0
Set session = CreateObject("Notes.NotesSession")
Fault "NotesSession.UserName 0x800706BA"
text = session.UserName
Err.Clear
Headers "", 0
Set mail.SessionObject = session
Raised "a session of the script's own", 0
Headers "", 2002
Headers "", 0
Same "after all that", CLng(1), mail.messageCount

' Whatever fails while a message is put together, nothing of it is left.
Sending "NotesDatabase.CreateDocument nothing", 2002
Sending "NotesDocument.ReplaceItemValue 4000", 9000
Sending "NotesDocument.ReplaceItemValue#5 0x800706BA", 2002
Sending "NotesDocument.CreateRichTextItem nothing", 2002
Sending "NotesRichTextItem.AppendText 4000", 9000
Sending "NotesRichTextItem.EmbedObject nothing", 2002
Sending "NotesRichTextItem.EmbedObject crash", 2000
Sending "NotesDocument.Send 4294", 9294
Sending "NotesDocument.Send 0x800706BA", 2002
Sending "NotesDocument.SaveMessageOnSend= 4000", 9000

' No file is left of a message that cannot be read whole.
Loading "NotesDocument.Items 4000", 9000
Loading "NotesEmbeddedObject.ExtractFile#2 4000", 9000
Loading "NotesEmbeddedObject.ExtractFile#4 0x800706BA", 2002
Loading "NotesDocument.MarkRead 4000", 9000

' A client that does not know the unread state.
Fault "NotesDocument.GetRead 0x80020006" & vbCrLf & "NotesDocument.MarkRead 0x80020006"
mail.UnreadCount
Raised "unread", 530
mail.LoadMessageHeaders
Raised "headers", 0
Same "no status", "", mail.GetHeaderItemString(23)
mail.LoadMessage
Raised "load", 0
Fault ""
Same "marked as read", CLng(0), mail.UnreadCount

mail.DecodeError vbObjectError + 9060, system, 0, 0, text
Same "no text of ours", "Undetermined", text
Same "no text of ours", 0, CInt(system)

Sub Fault(line)
  Dim file
  Set file = files.CreateTextFile("C:\QuillonDesk\faults.txt", True)
  file.Write line
  file.Close
End Sub
Sub Headers(line, code)
  On Error Resume Next
  Fault line
  mail.LoadMessageHeaders
  Raised line, code
  Fault ""
End Sub
Sub Sending(line, code)
  On Error Resume Next
  Fault line
  mail.NewMessage
  mail.AddRecipientTo "Bob Baker"
  mail.subject = "half"
  mail.Message = "text"
  mail.AddAttachment WScript.Arguments(0)
  mail.Send
  Raised line, code
  Fault ""
End Sub
Sub Loading(line, code)
  On Error Resume Next
  mail.LoadMessageHeaders
  Fault line
  mail.LoadMessage
  Raised line, code
  Fault ""
End Sub
