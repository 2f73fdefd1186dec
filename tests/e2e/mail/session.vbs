' A Server object for a mail host of the test. The process may still hold what the script before
' this one has written.
Sub NewServer(smtpPort, popPort)
  Set mail = CreateObject("QuillonInterface.Server")
  mail.mailSystem = 10
  mail.LoginDialog = False
  mail.SMTPServer = "127.0.0.1"
  mail.SMTPPort = smtpPort
  mail.postOffice = "127.0.0.1"
  mail.POPPort = popPort
  mail.loginName = "joe"
  mail.Password = "secret"
  mail.NewMessage
  mail.from = "Ann Example <ann@example.com>"
  mail.replyTo = ""
  mail.TimeoutConnect = 2000
  mail.TimeoutProtocol = 2000
End Sub

' To be called under On Error Resume Next, right after the statement: 0 stands for no error. The
' text is not looked at when it is "*".
Sub Ended(what, expectedNumber, expectedText)
  Dim number, text
  number = Err.Number
  text = Err.Description
  If number <> 0 Then number = number - vbObjectError
  Err.Clear
  If number <> expectedNumber Then
    WScript.Echo what & ": " & number & " [" & text & "] instead of " & expectedNumber
  ElseIf expectedText <> "*" And text <> expectedText Then
    WScript.Echo what & ": [" & text & "] instead of [" & expectedText & "]"
  End If
End Sub
