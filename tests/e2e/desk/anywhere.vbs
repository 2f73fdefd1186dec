' A Server object for any mail system, as ann, with what scripts need to run on all of them.
' Arguments: mail system, post office, ports of SMTP and POP3.
Dim sleeper
Set sleeper = CreateObject("QuillonTest.Sleeper")
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = WScript.Arguments(0)
mail.loginName = "ann"
mail.Password = "secret"
mail.postOffice = WScript.Arguments(1)
mail.SMTPServer = "127.0.0.1"
mail.SMTPPort = WScript.Arguments(2)
mail.POPPort = WScript.Arguments(3)

' To oneself, without anything in it yet.
Sub NewLetter(subject)
  mail.NewMessage
  mail.from = "Ann Archer <ann@desk.example>"
  mail.AddRecipientTo "Ann Archer <ann@desk.example>"
  mail.AddRecipientCc "Bob Baker <bob@desk.example>"
  mail.subject = subject
End Sub

' Until so many messages have arrived: somebody else may carry them.
Sub Await(count)
  Dim attempt
  For attempt = 1 To 400
    mail.LoadMessageHeaders
    If mail.messageCount >= count Then Exit Sub
    mail.Logout  ' a session with a POP3 server sees what was there at its begin
    sleeper.Sleep 50
  Next
End Sub
