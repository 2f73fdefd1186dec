' Somebody else is in the mailbox; no time-out may come before the server has lost its patience.
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.TimeoutConnect = 30000
mail.TimeoutProtocol = 30000
On Error Resume Next
mail.LoadMessageHeaders
Ended "busy", 6015, "[IN-USE] Mailbox is locked by another POP3 session."
