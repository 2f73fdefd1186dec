' Settings of the next calls, for SMTP and POP3 alike.
Dim security, mechanism, login, password, token, pin, host
' What no text may hold, with blanks between.
Dim secrets
Dim logged

Sub Prepare(port)
  NewServer port, port
  If IsEmpty(logged) Then mail.InternetLogging = True
  logged = True
  mail.SMTPServer = host
  mail.postOffice = host
  mail.TimeoutConnect = 20000
  mail.TimeoutProtocol = 20000
  mail.SMTPSecurity = security
  mail.POPSecurity = security
  mail.loginName = login
  mail.SMTPLoginName = login
  mail.SMTPPassword = password
  mail.Password = password
  mail.Authentication = mechanism
  mail.PinnedCertificate = pin
  mail.AccessToken = token
End Sub

' To be called right behind the call, under On Error Resume Next. `number` is of Internet mail, 0 when
' the call is to succeed; the text is to hold `words`.
Sub Came(what, number, words)
  Dim found, text, one
  found = Err.Number
  text = Err.Description
  Err.Clear
  If found <> 0 Then found = found - vbObjectError - 6000
  If found <> number Or (words <> "" And InStr(1, text, words, 1) = 0) Then
    WScript.Echo what & ": " & found & " [" & text & "] instead of " & number & " [" & words & "]"
  End If
  If found = 0 And security > 0 Then Same what, "TLS 1.2", mail.TLSVersion
  text = text & mail.LastServerReply & mail.ServerCertificate
  For Each one In Split(secrets, " ")
    If InStr(text, one) > 0 Then WScript.Echo what & " tells a secret: " & text
  Next
End Sub

Sub SendTo(port, what, number, words)
  On Error Resume Next
  Prepare port
  mail.AddRecipientTo "joe@quillon.test"
  mail.subject = what
  mail.Message = "A text."
  If Err.Number <> 0 Then WScript.Echo what & ": " & Err.Number & " " & Err.Description
  mail.Send
  Came what, number, words
End Sub

Sub FetchFrom(port, what, number, words)
  On Error Resume Next
  Prepare port
  If Err.Number <> 0 Then WScript.Echo what & ": " & Err.Number & " " & Err.Description
  mail.LoadMessageHeaders
  Came what, number, words
End Sub
