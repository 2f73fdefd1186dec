' A mailbox of one, and a server that hangs up when a call is over.
Dim turn
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.AddRecipientTo "bob@example.com"
On Error Resume Next
For turn = 1 To 2
  mail.LoadMessageHeaders
  Ended "headers, turn " & turn, 0, ""
Next
mail.messageIndex = 0
mail.DeleteMessage
Ended "DeleteMessage", 0, ""
For turn = 1 To 2
  mail.Send
  Ended "Send, turn " & turn, 0, ""
Next
