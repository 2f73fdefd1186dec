NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.AddRecipientTo "Bob <bob@example.com>, ""Doe, Jane"" <jane@example.com>"
mail.AddRecipientTo "plain@example.com"
mail.AddRecipientCc "Carl <carl@example.com>"
mail.AddRecipientBcc "Hidden <hidden@example.com>, hidden2@example.com"
mail.subject = "Minutes"
mail.Message = "Dear all," & vbCrLf & vbCrLf & "the minutes are done."
mail.replyTo = "office@example.com"
mail.Importance = 1
mail.UTCOffset = 5.5
mail.AddXHeader "Department", "Sales"
mail.Send

' A message to nobody but a Bcc recipient, on the same connection.
mail.NewMessage
mail.AddRecipientBcc "hidden@example.com"
mail.Send
Same "refused recipients", 0, CInt(mail.GetMessageItemCount(11))

' Delivered to one address, whatever the recipients are.
mail.undocumented1 = "|ONLY_RECIP|trial@example.com"
mail.AddRecipientTo "bob@example.com"
mail.Send
mail.undocumented1 = "|ONLY_RECIP|"
