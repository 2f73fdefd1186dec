' Three recipients, of whom Exim takes one.
Dim text
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.AddRecipientTo "Joe <joe@quillon.test>, nobody@quillon.test"
mail.AddRecipientBcc "far@elsewhere.test"
mail.subject = "Through Exim"
text = "First" & vbLf & vbLf & ".dots" & vbCrLf & "..more" & vbCr
mail.Message = text & Chr(228) & vbCrLf & String(900, "x")
On Error Resume Next
mail.Send
Ended "some", 6020, "One or more bad recipients, but message was sent to good recipients."
On Error GoTo 0
Same "refused", "nobody@quillon.test, far@elsewhere.test", mail.GetMessageItemString(11)

' None of them.
mail.NewMessage
mail.AddRecipientTo "nobody@quillon.test"
On Error Resume Next
mail.Send
Ended "none", 6503, "SMTP command error.  Is this really an SMTP server?"
On Error GoTo 0

' A second message on the road.
mail.NewMessage
mail.AddRecipientTo "joe@quillon.test"
mail.subject = "Second"
mail.Send
