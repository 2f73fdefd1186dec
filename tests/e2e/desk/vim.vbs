' Everything a script sees of VIM in an inbox of ten messages, of which one has been read. Arguments:
' a directory with files to send, one for received files, how long the first one's text is.
Dim text
Set mail = CreateObject("QuillonInterface.Server")
mail.SetNativeSystem
Same "preferred", True, mail.mailSystem = 2
mail.NewMessage
mail.AttachmentDirectory = WScript.Arguments(1)

' Headers.
mail.MaximumHeaders = 3
mail.LoadMessageHeaders
Same "three of ten", CLng(3), mail.messageCount
Same "a session", True, mail.sessionHandle <> 0
mail.MaximumHeaders = 100
mail.LoadMessageHeaders
Same "all", CLng(10), mail.messageCount
Same "a long subject", "subject 1 " & String(300, "x"), mail.GetHeaderItemString(4)
Same "from", "Carl Example", mail.GetHeaderItemString(9)
Same "date", "5/6/2024 7:08:00 AM", mail.GetHeaderItemString(10)
Same "unread", "U", mail.GetHeaderItemString(23)
Same "attachments", "10", mail.GetHeaderItemString(34)
mail.dateFormat = 5
mail.LoadMessageHeaders
Same "a fixed form", "May 06, 2024 07:08:00", mail.GetHeaderItemString(10)
mail.dateFormat = "yyyy-mm-dd"
mail.LoadMessageHeaders
Same "a form of one's own", "2024-05-06", mail.GetHeaderItemString(10)
mail.unreadOnly = True
mail.LoadMessageHeaders
Same "unread", CLng(9), mail.messageCount
mail.unreadOnly = False
mail.LoadMessageHeaders
Same "the count", CLng(9), mail.UnreadCount

' Messages: a text in several note parts, files, recipients.
mail.peekOnly = True
mail.LoadMessage
Same "peeked", CLng(9), mail.UnreadCount
mail.peekOnly = False
mail.LoadMessage
Same "read", CLng(8), mail.UnreadCount
text = mail.Message
Same "the whole text", CLng(WScript.Arguments(2)), CLng(Len(text))
Same "originator", "Carl Example", mail.from
Same "to", "Ann Archer", Left(mail.GetMessageItemString(1), 10)
Same "cc", "Bob Baker", Left(mail.GetMessageItemString(2), 9)
Same "bcc", "Carl Example", Left(mail.GetMessageItemString(3), 12)
Same "files", CLng(10), mail.GetMessageItemCount(6)

' Away and elsewhere.
mail.messageIndex = 1
mail.DeleteMessage
On Error Resume Next
mail.LoadMessage
Raised "gone", 4260
On Error GoTo 0
mail.LoadMessageHeaders
Same "after the deletion", CLng(9), mail.messageCount
mail.messageIndex = 1
mail.MoveMessage "Archive"
mail.LoadMessageHeaders
Same "after the move", CLng(8), mail.messageCount
mail.messageIndex = 0
mail.Folder = "Archive"
mail.LoadMessageHeaders
Same "in its new place", "subject 3", mail.GetHeaderItemString(4)
mail.MoveMessage "INBOX"
mail.LoadMessageHeaders
Same "taken away again", CLng(0), mail.messageCount
mail.Folder = ""
mail.LoadMessageHeaders
Same "and back", CLng(9), mail.messageCount
On Error Resume Next
mail.CopyMessage "Archive"
Raised "copy", 530
mail.CopyMessage "Archive"
RaisedText "copy", "Cannot copy a message with VIM."
mail.LoadMessageHeaders
Same "nothing was copied", CLng(9), mail.messageCount

' Names.
Same "a name", "Bob Baker", mail.ResolveName("bob")
Same "with its address", "Bob Baker <SMTP:bob@desk.example>", mail.ResolveNameEx("bob")
mail.ResolveName "nobody at all"
Raised "nobody", 4019

' A message to oneself and others, and back; what was sent is listed apart from what came.
mail.NewMessage
mail.AddRecipientTo "Ann Archer"
mail.AddRecipientCc "Bob Baker <SMTP:bob@desk.example>"
mail.AddRecipientBcc "carl"
mail.subject = "there and back " & Chr(128)
mail.Message = text
mail.AddAttachment WScript.Arguments(0) & "\one.bin"
mail.AddAttachment WScript.Arguments(0) & "\two.txt"
mail.Certify = True
mail.DeliveryReport = 1
mail.Importance = 1
mail.Send
Raised "send", 0
mail.LoadMessageHeaders
mail.messageIndex = 9
mail.LoadMessage
Same "it came back", "there and back " & Chr(128), mail.subject
Same "its text", True, mail.Message = text
Same "its files", "one.bin, two.txt", mail.GetMessageItemString(7)
mail.Folder = "QLNM_MESSAGE_LOG"
mail.LoadMessageHeaders
Same "sent", CLng(1), mail.messageCount
Same "which", "there and back " & Chr(128), mail.GetHeaderItemString(4)
mail.Folder = ""

' Who cannot be found, or not be told from others.
mail.AddRecipientTo "sam s"
mail.Send
Raised "more than one", 4258
mail.Send
RaisedText "more than one", "Bad address=sam s (VIMSetMessageRecipient)"
mail.NewMessagePost
mail.Post
Raised "nothing to post", 551
mail.subject = "news"
mail.Message = "for all"
mail.AddRecipientTo "bob"
mail.Post
Raised "post", 0
mail.Logout
Raised "logout", 0
Same "session over", CLng(0), mail.sessionHandle
