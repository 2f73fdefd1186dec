' The mail host that does everything right.
Dim goodSmtp, goodPop
goodSmtp = WScript.Arguments(0)
goodPop = WScript.Arguments(1)

' A Send through `port` ends with a number and a text, and the next Send works.
Sub SendEnds(what, port, size, number, text)
  mail.NewMessage
  mail.AddRecipientTo "one@example.com"
  mail.AddRecipientCc "two@example.com"
  mail.AddRecipientBcc "three@example.com"
  mail.subject = what
  mail.Message = String(size, "x")
  mail.SMTPPort = port
  On Error Resume Next
  mail.Send
  Ended what, number, text
  mail.Message = "once more"
  mail.SMTPPort = goodSmtp
  mail.Send
  Ended what & ", the next call", 0, ""
End Sub

' The same for an operation on a mailbox, or for asking a name.
Sub ReadEnds(what, port, operation, number, text)
  mail.POPPort = goodPop
  mail.LoadMessageHeaders
  mail.messageIndex = 0
  mail.POPPort = port
  On Error Resume Next
  Select Case operation
    Case "login" mail.Login
    Case "headers" mail.LoadMessageHeaders
    Case "identifiers" mail.LoadMessageIdentifiers
    Case "message" mail.LoadMessage
    Case "delete" mail.DeleteMessage
    Case "logout"
      mail.Login
      mail.Logout
    Case "resolve"
      mail.SMTPPort = port
      Same what & ", answer", "", mail.ResolveName("bob")
    Case "deletion"
      mail.DeleteMessage
      mail.Logout
    Case Else WScript.Echo what & ": no such operation"
  End Select
  Ended what, number, text
  mail.POPPort = goodPop
  mail.SMTPPort = goodSmtp
  mail.LoadMessageHeaders
  Ended what & ", the next call", 0, ""
  Same what & ", messages", 3, CInt(mail.messageCount)
End Sub

NewServer goodSmtp, goodPop
