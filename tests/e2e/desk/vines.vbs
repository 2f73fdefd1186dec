' Everything a script sees of the sample provider. Arguments: the directory of its mail, one with
' the files to send, one for received files.
Dim other, number, system, decoded, api, text
Set mail = CreateObject("QuillonInterface.Server")
Same "present", True, mail.QueryMailSystem(20) = -1
mail.SetNativeSystem
Same "found first", 20, mail.mailSystem
Same "library", "C:\Provider\sample_provider.dll", mail.GetInterfaceString(42)
mail.postOffice = WScript.Arguments(0)
mail.loginName = "Ann"
mail.Password = "secret"
mail.NewMessage
mail.AddRecipientTo "Ann Archer <ann@sample>, bob"
mail.subject = "Files " & Chr(233)
mail.Message = "First line" & vbCrLf & "." & vbCrLf & Chr(128)
mail.Certify = True
mail.Importance = 1
mail.AddAttachment WScript.Arguments(1) & "\one.bin"
mail.AddAttachment WScript.Arguments(1) & "\two.txt"
mail.Send
mail.ClearMessageItems 6
mail.subject = "Second"
mail.Send
Same "unread", CLng(2), mail.UnreadCount

mail.NewMessage
mail.AttachmentDirectory = WScript.Arguments(2)
mail.LoadMessageHeaders
Same "headers", CLng(2), mail.messageCount
Same "subject of the header", "Files " & Chr(233), mail.GetHeaderItemString(4)
Same "sender", "ann", mail.GetHeaderItemString(9)
Same "to", "Ann Archer, bob", mail.GetHeaderItemString(1)
Same "unread mark", "U", mail.GetHeaderItemString(23)
Same "priority", "1", mail.GetHeaderItemString(25)
Same "receipt", "-1", mail.GetHeaderItemString(27)
mail.LoadMessage
Same "subject", "Files " & Chr(233), mail.subject
Same "text", "First line" & vbCrLf & "." & vbCrLf & Chr(128), mail.Message
Same "recipients", "Ann Archer <ann@sample>, bob", mail.GetMessageItemString(1)
Same "files", "one.bin, two.txt", mail.GetMessageItemString(7)
Same "one is read", CLng(1), mail.UnreadCount
mail.unreadOnly = True
mail.LoadMessageHeaders
Same "the other one", "Second", mail.GetHeaderItemString(4)
mail.unreadOnly = False

mail.LoadMessageHeaders
mail.MoveMessage "Old"
mail.messageIndex = 1
mail.DeleteMessage
mail.messageIndex = 0
mail.LoadMessageHeaders
Same "nothing is left", CLng(0), mail.messageCount
mail.Folder = "Old"
mail.LoadMessageHeaders
Same "moved", "Files " & Chr(233), mail.GetHeaderItemString(4)

' One session for two objects; the second one never ends it.
Set other = CreateObject("QuillonInterface.Server")
other.mailSystem = 20
other.SessionHandleEx = mail.sessionHandle
other.Folder = "Old"
other.LoadMessageHeaders
Same "the same session", CLng(1), other.messageCount
other.Logout
mail.LoadMessageHeaders
Same "is still open", CLng(1), mail.messageCount
On Error Resume Next
other.SessionHandleEx = 999
Raised "no such session", 529

' Numbers of the provider come as they are.
mail.MoveMessage "None"
number = Err.Number
Raised "no such folder", 3005
mail.DecodeError number, system, decoded, api, text
Same "whose it is", 20, system
Same "what it means", "There is no such folder: None.", text
mail.MoveMessage "None"
RaisedText "no such folder", "There is no such folder: None."
mail.CopyMessage "Old"
Raised "copies", 530
mail.CreateFolder "New"
Raised "folders", 530
mail.NewMessage
mail.AddRecipientTo "nobody"
mail.Send
Raised "nobody", 3001
mail.Logout
Raised "logout", 0
Same "no session", CLng(0), mail.sessionHandle
mail.Password = "wrong"
mail.Login
Raised "wrong password", 3002
Set other = Nothing
