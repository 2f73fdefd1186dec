' Wrong calls, property calls in a row, collections.
Dim i, items, item, joined, other

Set mail = CreateObject("QuillonInterface.Server")
On Error Resume Next
mail.NoSuchMember
Raised "an unknown member", 438
mail.AddRecipientTo
Raised "a missing argument", 449
mail.AddRecipientTo "a", "b"
Raised "one argument too many", 450
mail.AddAlternative "a", "b", "c"
Raised "a word for a number", 13
mail.ClearMessageItems 70000
Raised "a large number for a short", 6
mail.TimeoutConnect = "soon"
Raised "a word for a time", 13
mail.subject = Array(1, 2)
Raised "an array for a text", 13
Set mail.subject = mail
Raised "Set for a text", 438
mail.ServerVersion = "2"
Raised "a read-only property", 438
item = mail.Password
Raised "a write-only property", 438
Same "TimeoutConnect", CLng(30000), mail.TimeoutConnect
Same "subject", "", mail.subject
mail.ErrorDisplay = 1
Same "source", "QuillonInterface.Server", Err.Source
RaisedText "description", "Invalid property value."
On Error GoTo 0

mail.AddRecipientCc "a@x, b@x,c@x"
Set items = mail.MessageItems(2)
Set other = CreateObject("QuillonInterface.Server")
other.ClearMessageItems 2
Same "a list that was handed out", CLng(3), items.Count
Set other = Nothing
For Each item In items
  joined = joined & item & ";"
Next
Same "For Each", "a@x;b@x;c@x;", joined
Same "the first item", "a@x", items(1)
On Error Resume Next
item = items.Item(4)
Raised "an item beyond the last", 9
On Error GoTo 0
Set items = Nothing

For i = 1 To 5000
  mail.subject = "subject " & i
  If mail.subject <> "subject " & i Then WScript.Echo "call " & i & ": " & mail.subject
Next
