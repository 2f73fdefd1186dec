' Everything a script sees of Active Messaging. Arguments: a directory with files, one for received
' files, the number of messages in the inbox.
Dim session, index
NewServer 9
Same "present", True, mail.QueryMailSystem(9) = -1
mail.LoginDialog = False
mail.Login
Same "session", "ann", mail.SessionObject.Name

' Headers.
mail.MaximumHeaders = 2
mail.LoadMessageHeaders
Same "at most", CLng(2), mail.messageCount
mail.MaximumHeaders = 100
mail.Folder = "iNbOx"
mail.LoadMessageHeaders
Same "all", CLng(WScript.Arguments(2)), mail.messageCount
Same "inbox", "Inbox", mail.FolderObject.Name
Same "subject", "subject 1", mail.GetHeaderItemString(4)
Same "from", "Carl Example <carl@elsewhere.example>", mail.GetHeaderItemString(9)
Same "date", "5/6/2024 7:08:00 AM", mail.GetHeaderItemString(10)
Same "status", "U", mail.GetHeaderItemString(23)
Same "type", "IPM.Note", mail.GetHeaderItemString(30)
Same "attachments", "1", mail.GetHeaderItemString(34)
Same "recipients", "1", mail.GetHeaderItemString(35)
Same "unread", CLng(WScript.Arguments(2)), mail.UnreadCount

' Messages.
mail.AttachmentDirectory = WScript.Arguments(1)
mail.peekOnly = True
mail.LoadMessage
Same "peeked", CLng(WScript.Arguments(2)), mail.UnreadCount
mail.peekOnly = False
mail.LoadMessage
Same "read", CLng(WScript.Arguments(2)) - 1, mail.UnreadCount
Same "text", "text 1", mail.Message
Same "message", "subject 1", mail.MessageObject.Subject
Same "to", "Ann Archer", mail.GetMessageItemString(1)
Same "file", "notes.txt", mail.GetMessageItemString(7)

' Folders.
mail.FolderDelimiter = "/"
mail.CreateFolder "Inbox/Orders"
mail.CreateFolder "Inbox/Orders/2024"
mail.CreateFolder "ann/Archive"
Same "exists", True, mail.FolderExists("inbox/orders") = -1
Same "does not", True, mail.FolderExists("Inbox/None") = 0
mail.CopyFolder "Inbox/Orders", "Archive", True
Same "copied", "ann/Archive/Orders;ann/Archive/Orders/2024", ListOf("Archive", True, True)
Same "stores", "Public Folders;ann", ListOf("/", False, False)
mail.CopyMessage "Archive"
mail.MoveMessage "Inbox/Orders"
mail.Folder = "Inbox/Orders"
mail.LoadMessageHeaders
Same "moved", CLng(1), mail.messageCount
mail.LoadMessage
mail.DeleteMessage
mail.DeleteFolder "Inbox/Orders"
Same "deleted", True, mail.FolderExists("Inbox/Orders") = 0
mail.Folder = ""

' A message with all options, and one in rich text.
mail.NewMessage
mail.AddRecipientTo "Bob Baker"
mail.AddRecipientCc "Carl <SMTP:carl@elsewhere.example>"
mail.subject = "options"
mail.Message = "{\rtf1 rich}"
mail.AddAttachment WScript.Arguments(0) & "\one.bin"
mail.Certify = True
mail.Importance = 2
mail.Sensitivity = 3
mail.DeliveryReport = 2
mail.NameResolution = True
mail.Send
Same "a name", "Bob Baker <bob@desk.example>", Replace(mail.ResolveNameEx("bob"), "SMTP:", "")

' Posts.
mail.NewMessagePost
mail.subject = "news"
mail.Message = "for all"
mail.Folder = "Public Folders/News"
mail.CreateFolder mail.Folder
mail.Post
Same "conversation", True, Len(mail.ConversationIndex) > 20
index = mail.ConversationIndex
mail.ConversationIndex = index & "::REPLY"
mail.subject = "RE: news"
mail.Post
Same "answer", index, Left(mail.ConversationIndex, Len(index))
Same "deeper", True, Len(mail.ConversationIndex) > Len(index)
mail.LoadMessageHeaders
Same "posts", CLng(2), mail.messageCount
Same "topic", "news", mail.GetHeaderItemString(31)

' Failures, with their numbers and texts.
On Error Resume Next
mail.Folder = "None/at all"
mail.LoadMessageHeaders
Raised "no folder", 8050
mail.LoadMessageHeaders
RaisedText "no folder", "Bad folder name."
mail.MoveMessage ""
Raised "no destination", 8050
mail.DeleteFolder "None"
Raised "nothing to delete", 8170
mail.CreateFolder "Archive"
Raised "there already", 8108
mail.ResolveName "nobody at all"
Raised "unknown name", 8000
mail.ResolveName "nobody at all"
RaisedText "unknown name", "Invalid recipients."
mail.Folder = ""
mail.Post
Raised "post nowhere", 551
mail.Logout
Raised "logout", 0
mail.Password = "wrong"
mail.Login
Raised "wrong password", 8003
mail.Login
RaisedText "wrong password", "Login failed"
On Error GoTo 0

' A session of the script's own is used, and stays.
Set session = CreateObject("MAPI.Session")
session.Logon "bob", "secret", False
Set mail.SessionObject = session
mail.LoadMessageHeaders
Same "bob's", "options", mail.GetHeaderItemString(4)
mail.Logout
Same "still there", "bob", session.Name
session.Logoff

Function ListOf(parent, paths, everything)
  Dim text, count
  mail.GetFolderListString parent, paths, ";", everything, text, count
  ListOf = text
End Function
