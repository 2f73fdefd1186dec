' Sends a message with two files to oneself and reads it back: the mail system is all that differs.
' Arguments besides: directory of the files, directory for received ones.
Dim received
NewLetter "There and back"
mail.Message = "First line" & vbCrLf & "second line"
mail.AddAttachment WScript.Arguments(4) & "\one.bin"
mail.AddAttachment WScript.Arguments(4) & "\two.txt"
mail.Send

mail.NewMessage
mail.AttachmentDirectory = WScript.Arguments(5)
Await 1
Same "messages", CLng(1), mail.messageCount
mail.messageIndex = 0
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
