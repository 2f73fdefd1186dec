' A mailbox of as many messages as the third argument says; their subjects are their numbers.
Dim index, wrong
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.LoadMessageIdentifiers
Same "identifiers", CLng(WScript.Arguments(2)), mail.messageCount
mail.LoadMessageHeaders
Same "headers", CLng(WScript.Arguments(2)), mail.messageCount
For index = 0 To mail.messageCount - 1
  mail.messageIndex = index
  Same "number", CStr(index + 1), mail.GetHeaderItemString(20)
  Same "subject", "Message " & index, mail.GetHeaderItemString(4)
Next
