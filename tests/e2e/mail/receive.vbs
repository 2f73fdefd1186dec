' The mailbox: two messages that were there, and one from send.vbs.
Dim people, count
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.LoadMessageIdentifiers
Same "identifiers", 3, CInt(mail.messageCount)
mail.messageIndex = 1
Same "number", "2", mail.GetHeaderItemString(20)
Same "identifier", "0000.0002", mail.GetHeaderItemString(22)

mail.LoadMessageHeaders
Same "headers", 3, CInt(mail.messageCount)
mail.messageIndex = 2
mail.GetHeaderItems 1, people, count
Same "To count", 3, CInt(count)
Same "To", """Doe, Jane"" <jane@example.com>", people(1)
Same "Cc", "Carl <carl@example.com>", mail.GetHeaderItemString(2)
Same "Subject", "Minutes", mail.GetHeaderItemString(4)
Same "From", "Ann Example <ann@example.com>", mail.GetHeaderItemString(9)
Same "X-Priority", "1", mail.GetHeaderItemString(25)

mail.LoadMessage
Same "text", "Dear all," & vbCrLf & vbCrLf & "the minutes are done." & vbCrLf, mail.Message
Same "own field", "Sales", mail.GetHeaderValueByName("x-department")
Same "loaded Cc", "Carl <carl@example.com>", mail.GetMessageItemString(2)
Same "no Bcc", 0, CInt(mail.GetMessageItemCount(3))

mail.messageIndex = 1
mail.LoadMessage
Same "dots", "." & vbCrLf & "..two" & vbCrLf & vbCrLf, mail.Message

mail.undocumented1 = "|SINGLE_HEADER|2"
mail.LoadMessageHeaders
Same "one header", 1, CInt(mail.messageCount)
mail.messageIndex = 0
Same "its number", "2", mail.GetHeaderItemString(20)
mail.LoadMessage
Same "its message", "." & vbCrLf & "..two" & vbCrLf & vbCrLf, mail.Message
mail.undocumented1 = "|SINGLE_HEADER|4"
On Error Resume Next
mail.LoadMessageHeaders
Raised "no such header", 6024
On Error GoTo 0
mail.undocumented1 = "|SINGLE_HEADER|0"
mail.LoadMessageHeaders

mail.messageIndex = 0
mail.DeleteMessage
mail.messageIndex = 2
mail.DeleteMessage
mail.LoadMessageHeaders
Same "after deleting", 1, CInt(mail.messageCount)
mail.Logout
mail.LoadMessageHeaders
Same "in the next session", 1, CInt(mail.messageCount)
mail.messageIndex = 0
Same "the one that is left", "Dots", mail.GetHeaderItemString(4)
