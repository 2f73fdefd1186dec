' Loads every message of the mailbox, each into a directory of its own, and tells what came out: one
' line each for the text, every file and every name.

' Bytes of the code page in hexadecimal where they are no plain characters.
Function Plain(text)
  Dim i, code
  For i = 1 To Len(text)
    code = Asc(Mid(text, i, 1))
    If code > 32 And code < 127 And code <> 37 Then
      Plain = Plain & Chr(code)
    Else
      Plain = Plain & "%" & Right("0" & Hex(code), 2)
    End If
  Next
End Function

Dim i, item
NewServer WScript.Arguments(0), WScript.Arguments(0)
mail.TimeoutProtocol = 20000
mail.LoadMessageHeaders
For i = 0 To mail.messageCount - 1
  mail.AttachmentDirectory = WScript.Arguments(1) & "\" & i
  mail.messageIndex = i
  mail.LoadMessage
  WScript.Echo "message " & i
  WScript.Echo "body " & Plain(mail.Message)
  For Each item In mail.MessageItems(6)
    WScript.Echo "file " & Plain(item)
  Next
  For Each item In mail.MessageItems(7)
    WScript.Echo "name " & Plain(item)
  Next
Next
