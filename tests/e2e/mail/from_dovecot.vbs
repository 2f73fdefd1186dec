' What through_exim.vbs has sent, at Dovecot.
Dim text, index, longest
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.Password = "wrong"
On Error Resume Next
mail.LoadMessageHeaders
Ended "wrong password", 6015, "[AUTH] Authentication failed."
On Error GoTo 0
mail.Password = "secret"
mail.LoadMessageHeaders
Same "messages", 2, CInt(mail.messageCount)
index = 0
mail.messageIndex = 0
If mail.GetHeaderItemString(4) = "Second" Then index = 1
mail.messageIndex = index
Same "subject", "Through Exim", mail.GetHeaderItemString(4)
Same "To", "Joe <joe@quillon.test>, nobody@quillon.test", mail.GetHeaderItemString(1)
mail.LoadMessage
longest = String(900, "x")
text = "First" & vbCrLf & vbCrLf & ".dots" & vbCrLf & "..more" & vbCrLf
text = text & Chr(228) & vbCrLf & longest & vbCrLf
Same "text", text, mail.Message
mail.messageIndex = 0
mail.DeleteMessage
mail.messageIndex = 1
mail.DeleteMessage
mail.Logout
mail.LoadMessageHeaders
Same "left", 0, CInt(mail.messageCount)
