' Sends a message with two files to oneself and reads it back: the mail system is all that differs.
' Arguments: mail system, directory of the files, directory for received ones, ports of SMTP and POP3.
Dim file, received
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = WScript.Arguments(0)
mail.loginName = "ann"
mail.Password = "secret"
mail.postOffice = WScript.Arguments(3)
mail.SMTPServer = "127.0.0.1"
mail.SMTPPort = WScript.Arguments(4)
mail.POPPort = WScript.Arguments(5)
mail.NewMessage
mail.from = "Ann Archer <ann@desk.example>"
mail.AddRecipientTo "Ann Archer <ann@desk.example>"
mail.AddRecipientCc "Bob Baker <bob@desk.example>"
mail.subject = "There and back"
mail.Message = "First line" & vbCrLf & "second line"
mail.AddAttachment WScript.Arguments(1) & "\one.bin"
mail.AddAttachment WScript.Arguments(1) & "\two.txt"
mail.Send

mail.NewMessage
mail.AttachmentDirectory = WScript.Arguments(2)
mail.LoadMessageHeaders
Same "messages", True, mail.messageCount >= 1
mail.messageIndex = mail.messageCount - 1
Same "subject of the header", "There and back", mail.GetHeaderItemString(4)
mail.LoadMessage
Same "subject", "There and back", mail.subject
received = mail.Message
If Right(received, 2) = vbCrLf Then received = Left(received, Len(received) - 2)
Same "text", "First line" & vbCrLf & "second line", received
Same "files", CLng(2), mail.GetMessageItemCount(6)
Same "names", "one.bin, two.txt", mail.GetMessageItemString(7)
Same "to", "Ann Archer", Left(mail.GetMessageItemString(1), 10)
Same "cc", "Bob Baker", Left(mail.GetMessageItemString(2), 9)
mail.DeleteMessage
mail.Logout
