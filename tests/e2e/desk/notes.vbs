' Everything a script sees of Notes in an inbox of three unread messages, the second of them the
' newest and the third with two files of one name. Arguments: a directory with files, one for
' received files.
Set mail = CreateObject("QuillonInterface.Server")
Same "present", True, mail.QueryMailSystem(11) = -1
NewServer 11
mail.Login
Same "session", "CN=Ann Archer/O=Desk", mail.SessionObject.UserName

' Headers.
mail.dateSort = False
mail.LoadMessageHeaders
Same "as in the view", "subject 1;subject 2;subject 3;", Subjects
mail.dateSort = True
mail.LoadMessageHeaders
Same "newest first", "subject 2;subject 3;subject 1;", Subjects
mail.MaximumHeaders = 2
mail.LoadMessageHeaders
Same "the newest", "subject 2;subject 3;", Subjects
mail.MaximumHeaders = 100
mail.messageIndex = 1
Same "from", "Carl Example <carl@elsewhere.example>", mail.GetHeaderItemString(9)
Same "date", "5/7/2024 7:08:00 AM", mail.GetHeaderItemString(10)
Same "status", "U", mail.GetHeaderItemString(23)
Same "unread", CLng(3), mail.UnreadCount

' Messages.
mail.AttachmentDirectory = WScript.Arguments(1)
mail.peekOnly = True
mail.suppressAttachments = True
mail.LoadMessage
Same "without files", CLng(0), mail.GetMessageItemCount(6)
Same "peeked", CLng(3), mail.UnreadCount
mail.peekOnly = False
mail.suppressAttachments = False
mail.LoadMessage
Same "read", CLng(2), mail.UnreadCount
Same "text", "text 3", mail.Message
Same "to", "Ann Archer/Desk", mail.GetMessageItemString(1)
Same "cc", "Sam Smith <sam.smith@elsewhere.example>", mail.GetMessageItemString(2)
Same "files", "notes.txt, notes.txt", mail.GetMessageItemString(7)
mail.unreadOnly = True
mail.LoadMessageHeaders
Same "unread only", "subject 2;subject 1;", Subjects
mail.unreadOnly = False

' Folders: Orders\2024 and Old are there.
mail.FolderDelimiter = "/"
Same "exists", True, mail.FolderExists("orders/2024") = -1
Same "does not", True, mail.FolderExists("Orders/None") = 0
Same "at the top", "INBOX;Old;Orders", ListOf("/", False)
Same "paths", "INBOX;Old;Orders;Orders/2024", ListOf("/", True)
mail.messageIndex = 0
mail.CopyMessage "Orders/2024"
mail.LoadMessageHeaders
Same "copied", "subject 2;subject 3;subject 1;", Subjects
mail.MoveMessage "Old"
mail.LoadMessageHeaders
Same "moved", "subject 3;subject 1;", Subjects
mail.Folder = "Orders/2024"
mail.LoadMessageHeaders
Same "the copy", "subject 2;", Subjects
mail.Folder = "Old"
mail.LoadMessageHeaders
Same "the one that moved", "subject 2;", Subjects
mail.DeleteMessage
mail.LoadMessageHeaders
Same "empty", CLng(0), mail.messageCount
Same "nothing unread", CLng(0), mail.UnreadCount
mail.DeleteFolder "Old"
Same "deleted", True, mail.FolderExists("Old") = 0
mail.Folder = "($All)"
mail.LoadMessageHeaders
Same "a view", "subject 3;subject 1;", Subjects
mail.Folder = ""
mail.LoadMessageHeaders

' Names.
Same "a name", "Bob Baker/Desk", mail.ResolveName("bob")
Same "with its address", "Carl Example <carl@elsewhere.example>", mail.ResolveNameEx("carl example")

' A message with all options.
mail.NewMessage
mail.AddRecipientTo "Bob Baker"
mail.AddRecipientCc "Carl <carl@elsewhere.example>"
mail.AddRecipientBcc "Ann Archer/Desk"
mail.NameResolution = True
mail.replyTo = "bob@desk.example"
mail.subject = "options"
mail.Message = "one" & vbCrLf & vbCrLf & "three" & vbCrLf
mail.AddAttachment WScript.Arguments(0) & "\one.bin"
mail.AddAttachment WScript.Arguments(0) & "\two.txt"
mail.Signed = True
mail.Encrypt = True
mail.Certify = True
mail.Importance = 1
mail.DeliveryPriority = 4
mail.DeliveryReport = 2
mail.Send

' What there is not.
On Error Resume Next
mail.CreateFolder "New"
Raised "create folder", 530
mail.CopyFolder "Orders", "New", False
Raised "copy folder", 530
mail.Post
Raised "post", 530
mail.DeleteFolder "Old"
Raised "no folder to delete", 2050
mail.Folder = "None"
mail.LoadMessageHeaders
Raised "no folder to read", 2050
mail.Folder = ""
mail.LoadMessageHeaders
Raised "the inbox again", 0
mail.MoveMessage ""
Raised "no destination", 2050
mail.MoveMessage "($All)"
Raised "a view is no destination", 2050
mail.ResolveName "nobody at all"
Raised "unknown name", 9294
mail.ResolveName "Sam"
Raised "ambiguous name", 9295
mail.AddRecipientTo "nobody at all"
mail.NameResolution = False
mail.Send
Raised "send to an unknown name", 9294
mail.NewMessage

' A message that another program deletes meanwhile.
mail.LoadMessageHeaders
mail.messageIndex = 1
mail.SessionObject.GetDatabase("", "mail\ann").GetDocumentByUNID(mail.GetHeaderItemString(22)).Remove True
Raised "the other program", 0
mail.LoadMessage
Raised "deleted meanwhile", 9091
mail.DeleteMessage
Raised "deleted meanwhile", 9091

' Another mail file, one that is not there, and back.
mail.postOffice = "mail\bob"
mail.LoadMessageHeaders
Raised "another mail file", 0
Same "of somebody else", "options", mail.GetHeaderItemString(4)
mail.postOffice = "CN=Nowhere/O=Desk!!mail\bob.nsf"
mail.LoadMessageHeaders
Raised "no server", 9063
mail.postOffice = ""
mail.Logout
Raised "logout", 0

Function Subjects
  Dim index
  Subjects = ""
  For index = 0 To mail.messageCount - 1
    mail.messageIndex = index
    Subjects = Subjects & mail.GetHeaderItemString(4) & ";"
  Next
  mail.messageIndex = 0
End Function
Function ListOf(parent, everything)
  Dim text, count
  mail.GetFolderListString parent, everything, ";", everything, text, count
  ListOf = text
End Function
