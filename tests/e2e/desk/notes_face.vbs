' "Notes.NotesSession" as a script would use the real one. Arguments: a file to attach, where a
' received one goes.
Dim session, database, view, document, item, book, found
Set session = CreateObject("Notes.NotesSession")
Same "user", "CN=Ann Archer/O=Desk", session.UserName
Set database = session.GetDatabase("", "")
Same "not open", False, database.IsOpen
On Error Resume Next
database.GetView "($Inbox)"
Raised "not open", 4063
Same "unknown member", True, IsEmpty(database.NoSuchMember)
Same "unknown member", CLng(438), CLng(Err.Number)
Err.Clear
On Error GoTo 0
database.OpenMail
Same "mail file", "mail\ann.nsf", database.FilePath
Same "by name", True, session.GetDatabase("", "mail\bob").IsOpen
Same "no such file", False, session.GetDatabase("", "mail\eve").IsOpen

Set document = database.CreateDocument
document.Form = "Memo"
document.SendTo = Array("Bob Baker", "CN=Ann Archer/O=Desk")
document.ReplaceItemValue "CopyTo", "Carl <carl@elsewhere.example>"
document.Subject = "by hand"
Set item = document.CreateRichTextItem("Body")
item.AppendText "one"
item.AddNewLine 2
item.AppendText "three"
item.EmbedObject 1454, "", WScript.Arguments(0)
document.SaveMessageOnSend = True
document.Send False
Same "kept", "by hand", document.Subject(0)

Set view = database.GetView("$inbox")
Same "view", "($Inbox)", view.Name
Set document = view.GetFirstDocument
Same "subject", "by hand", First(document.GetItemValue("Subject"))
Same "second", "CN=Ann Archer/O=Desk", document.SendTo(1)
Same "copy", "Carl <carl@elsewhere.example>", First(document.GetItemValue("copyto"))
Same "no such item", "", First(document.GetItemValue("Nothing"))
Same "text", "one" & vbCrLf & vbCrLf & "three", document.GetFirstItem("Body").Text
Same "date", "Date", TypeName(document.PostedDate(0))
Same "unread", False, document.GetRead
document.MarkRead
Same "read", True, document.GetRead
For Each item In document.Items
  If item.Type = 1084 Then document.GetAttachment(First(item.Values)).ExtractFile WScript.Arguments(1)
Next
Set found = database.GetDocumentByUNID(document.UniversalID)

' Folders: a document is in as many as one likes.
document.PutInFolder "Projects\2026"
Same "in two", True, IsSame(view.GetFirstDocument, document)
Same "in two", True, IsSame(database.GetView("projects\2026").GetFirstDocument, document)
document.RemoveFromFolder "($Inbox)"
Same "in one", True, view.GetFirstDocument Is Nothing
database.GetView("Projects\2026").Remove
database.GetView("Projects").Remove
Same "folder gone", True, database.GetView("Projects\2026") Is Nothing
Same "document still there", True, found.IsValid
document.Remove True
Same "gone", False, found.IsValid

' The address book.
Set book = FirstObject(session.AddressBooks)
Same "closed", False, book.IsOpen
book.Open "", ""
Set view = book.GetView("($Users)")
Same "two of a name", CLng(2), view.GetAllDocumentsByKey("Sam", True).Count
Set document = view.GetAllDocumentsByKey("carl example", True).GetFirstDocument
Same "address", "carl@elsewhere.example", document.InternetAddress(0)

On Error Resume Next
database.GetDocumentByUNID String(32, "0")
Raised "no document", 4091
Set document = database.CreateDocument
document.SendTo = "nobody at all"
document.Send False
Raised "unknown name", 4294
document.SendTo = "Sam"
document.Send False
Raised "ambiguous", 4295

Function IsSame(one, other)
  IsSame = one.UniversalID = other.UniversalID
End Function
Function First(values)
  First = values(0)
End Function
Function FirstObject(values)
  Set FirstObject = values(0)
End Function
