' A mailbox of as many messages as the third argument says; their subjects are their
' numbers. Every 99th is looked at, as a call takes its time, and three are deleted.
Dim count, index
count = CLng(WScript.Arguments(2))
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.TimeoutProtocol = 20000
mail.LoadMessageIdentifiers
Same "identifiers", count, mail.messageCount
mail.MaximumHeaders = count
mail.LoadMessageHeaders
Same "headers", count, mail.messageCount
For index = 0 To count - 1 Step 99
  mail.messageIndex = index
  Same "number", CStr(index + 1), mail.GetHeaderItemString(20)
  Same "subject", "Message " & index, mail.GetHeaderItemString(4)
Next
For Each index In Array(0, count \ 2, count - 1)
  mail.messageIndex = index
  mail.DeleteMessage
Next
mail.Logout
mail.LoadMessageIdentifiers
Same "left", count - 3, mail.messageCount
mail.LoadMessageHeaders
Same "left, headers", count - 3, mail.messageCount
mail.messageIndex = 0
Same "the second is the first", "Message 1", mail.GetHeaderItemString(4)
