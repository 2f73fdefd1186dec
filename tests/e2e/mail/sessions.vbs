' A mailbox of three. The server refuses single commands and leaves the session open: TOP 2, RETR 1,
' DELE 1, RCPT 2, each once.
NewServer WScript.Arguments(0), WScript.Arguments(1)
On Error Resume Next
mail.LoadMessageHeaders
Ended "TOP", 6024, "The POP TOP command failed."
Same "headers that came", 1, CInt(mail.messageCount)
mail.LoadMessageHeaders
Ended "TOP again", 0, ""
mail.messageIndex = 2
mail.LoadMessage
Ended "RETR", 6021, "The POP RETRIEVE command failed."
mail.LoadMessage
Ended "RETR again", 0, ""
Same "subject", "2", mail.subject
mail.DeleteMessage
Ended "DELE", 6017, "The POP message deletion failed."
mail.DeleteMessage
Ended "DELE again", 0, ""

mail.NewMessage
mail.from = "ann@example.com"
mail.AddRecipientTo "one@example.com, two@example.com, three@example.com"
mail.Send
Ended "RCPT", 6020, "*"
Same "refused", "two@example.com", mail.GetMessageItemString(11)
mail.Send
Ended "RCPT again", 0, ""
Same "none refused", "", mail.GetMessageItemString(11)

' The text of a number is that of the protocol last worked with. Some numbers only older programs
' know: no call ends with them.
DecodesTo 29, "Unknown network error on send."
DecodesTo 1, "Could not connect to SMTP server."
DecodesTo 5, "An unknown SMTP error occurred."
DecodesTo 7, "The server port is not a SMTP server."
DecodesTo 10, "A bad recipient prevented the message from being sent."
mail.LoadMessageHeaders
DecodesTo 29, "Unknown network error."
DecodesTo 6, "An unknown POP error occurred."
DecodesTo 18, "The POP LIST command failed."
DecodesTo 19, "The POP NOOP command failed."
DecodesTo 22, "The POP RESET command failed."
DecodesTo 28, "Communications with the POP server timed out."

Sub DecodesTo(number, expected)
  Dim system, text
  mail.DecodeError vbObjectError + 6000 + number, system, 0, 0, text
  Same "system", CInt(10), CInt(system)
  Same "text of " & number, expected, text
End Sub

' Nobody is in these recipients, and no folder is in a mailbox.
mail.NewMessage
mail.AddRecipientTo "<>"
mail.Send
Ended "no address", 6009, "No recipients were specified."
mail.MoveMessage "Archive"
Ended "moving", 530, "Cannot move or copy a message with POP. (POPMoveMessage)"
mail.CopyMessage "Archive"
Ended "copying", 530, "Cannot move or copy a message with POP. (POPMoveMessage)"
