' Everything a script sees of Simple MAPI in an inbox of ten unread messages. Argument: a directory
' for received files.
Dim index, kept
NewServer 1

' Nobody to send to: nothing happens, not even a logon, and it is no success.
mail.AddRecipientCc "Bob Baker"
On Error Resume Next
mail.Send
Raised "send to nobody", 2000
On Error GoTo 0
Same "no session", CLng(0), mail.sessionHandle

mail.MaximumHeaders = 3
mail.LoadMessageHeaders
Same "three of ten", CLng(3), mail.messageCount
Same "a session", True, mail.sessionHandle <> 0
mail.MaximumHeaders = 100
mail.unreadOnly = True
mail.LoadMessageHeaders
Same "all", CLng(10), mail.messageCount
Same "the first", "subject 1", mail.GetHeaderItemString(4)
Same "from", "Carl Example", mail.GetHeaderItemString(9)
Same "date", "5/6/2024 7:08:00 AM", mail.GetHeaderItemString(10)
Same "unread", "U", mail.GetHeaderItemString(23)
Same "the count", CLng(10), mail.UnreadCount

' Reading marks as read, peeking does not.
mail.AttachmentDirectory = WScript.Arguments(0)
mail.peekOnly = True
mail.LoadMessage
Same "peeked", CLng(10), mail.UnreadCount
mail.peekOnly = False
mail.LoadMessage
Same "read", CLng(9), mail.UnreadCount
Same "text", "text 1", mail.Message
Same "originator", "Carl Example", mail.from
Same "recipients", "Ann Archer <SMTP:ann@desk.example>", mail.GetMessageItemString(1)
Same "files", "notes.txt, notes.txt", mail.GetMessageItemString(7)
kept = mail.GetMessageItems(6, index, index)
mail.suppressAttachments = True
mail.LoadMessage
Same "without files", CLng(0), mail.GetMessageItemCount(6)

mail.messageIndex = 9
mail.DeleteMessage
mail.LoadMessageHeaders
Same "after the deletion", CLng(8), mail.messageCount

On Error Resume Next
mail.MoveMessage "Inbox"
Raised "move", 530
mail.CopyMessage "Inbox"
RaisedText "copy", "Cannot copy message with MAPI 0"

' Names.
Same "a name", "Bob Baker", mail.ResolveName("bob")
Same "with its address", "Bob Baker <SMTP:bob@desk.example>", mail.ResolveNameEx("bob")
mail.ResolveName "nobody at all"
Raised "unknown", 2014
mail.ResolveName "nobody at all"
RaisedText "unknown", "Bad addressee"

' The mail program's own dialog, which can ask for recipients, and which the user closes.
mail.NativeMailDialog = True
mail.ClearMessageItems 1
mail.AddRecipientCc "bob"
mail.Send
Raised "closed", 2001
mail.NativeMailDialog = False

' Names and addresses apart, and a bare name for the mail program to look up.
mail.NewMessage
mail.AddRecipientTo "Carl Example <SMTP:carl@elsewhere.example>"
mail.AddRecipientBcc "bob"
mail.subject = "apart"
mail.Certify = True
mail.Send
Raised "send", 0
mail.NameResolution = True
mail.ClearMessageItems 1
mail.AddRecipientTo "nobody at all"
mail.Send
Raised "the dialog for somebody unknown closed", 2001
mail.Logout
Raised "logout", 0
Same "session over", CLng(0), mail.sessionHandle
mail.Password = "wrong"
mail.Login
Raised "wrong password", 2003
mail.Login
RaisedText "wrong password", "Login failed"
