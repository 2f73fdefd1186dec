' What is unread: the subjects that the second argument says; the first two of them are loaded, the
' second one without leaving a trace.
Dim subjects, i
subjects = Split(WScript.Arguments(1), ",")
NewServer WScript.Arguments(0), WScript.Arguments(0)
mail.TrackUnread = True
mail.unreadOnly = True
Same "count", CLng(UBound(subjects) + 1), mail.UnreadCount
mail.LoadMessageHeaders
Same "headers", CLng(UBound(subjects) + 1), mail.messageCount
For i = 0 To UBound(subjects)
  mail.messageIndex = i
  Same "subject", subjects(i), mail.GetHeaderItemString(4)
  mail.peekOnly = (i > 0)
  If i < 2 Then mail.LoadMessage
Next
mail.Logout
