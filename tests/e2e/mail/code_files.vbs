' Carries out the commands of a list, one a line.
Dim fso, commands, line
Set mail = CreateObject("QuillonInterface.Server")
Set fso = CreateObject("Scripting.FileSystemObject")
Set commands = fso.OpenTextFile(WScript.Arguments(0))
Do Until commands.AtEndOfStream
  line = commands.ReadLine
  On Error Resume Next
  mail.undocumented1 = line
  If Err.Number <> 0 Then WScript.Echo line & ": " & (Err.Number - vbObjectError)
  On Error GoTo 0
Loop
commands.Close
