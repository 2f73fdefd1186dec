' One of several clients at once: what is its own stays its own while the others work.
Dim i, name
name = WScript.Arguments(0)
Set mail = CreateObject("QuillonInterface.Server")
For i = 1 To 300
  mail.applicationName = name & i
  mail.subject = name
  Same "round " & i, name & i, mail.applicationName
Next
