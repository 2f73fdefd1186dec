' Loads every message of the mailbox, each into a directory of its own, and writes what came out into
' a file of UTF-16 text: one line for each header, text, file and name.
Dim found, header, item, i

Sub Tell(kind, text)
  text = Replace(text, "\", "\\")
  text = Replace(text, vbCr, "\r")
  found.WriteLine kind & " " & Replace(text, vbLf, "\n")
End Sub

Sub TellItems(kind, itemType)
  For Each item In mail.MessageItems(itemType)
    Tell kind, item
  Next
End Sub

Set found = CreateObject("Scripting.FileSystemObject").CreateTextFile( _
    WScript.Arguments(1) & "\found", True, True)
NewServer WScript.Arguments(0), WScript.Arguments(0)
mail.TimeoutProtocol = 20000
mail.LoadMessageHeaders
For i = 0 To mail.messageCount - 1
  mail.AttachmentDirectory = WScript.Arguments(1) & "\" & i
  mail.messageIndex = i
  Tell "message", i
  Tell "listed", mail.GetHeaderItemString(4)
  Tell "listed", mail.GetHeaderItemString(9)
  Tell "listed", mail.GetHeaderItemString(24)
  mail.LoadMessage
  Tell "subject", mail.subject
  Tell "from", mail.from
  TellItems "to", 1
  Tell "body", mail.Message
  TellItems "file", 6
  TellItems "name", 7
  TellItems "type", 13
  TellItems "html", 15
Next
found.Close
