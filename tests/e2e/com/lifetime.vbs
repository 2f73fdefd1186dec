' Objects that come and go.
Dim i
For i = 1 To 200
  Set mail = CreateObject("QuillonInterface.Server")
  mail.subject = "round " & i
  If mail.subject <> "round " & i Then WScript.Echo "round " & i & ": " & mail.subject
  Set mail = Nothing
Next
