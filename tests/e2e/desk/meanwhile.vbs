' Calls all the time. While another script's call is in the mail program it is told to try again,
' whatever its own mail system is, and afterwards it succeeds. Argument: a file to make at the begin.
Dim busy, number, other, till
NewServer 1
Set other = CreateObject("QuillonInterface.Server")
other.mailSystem = 7
mail.LoadMessageHeaders
CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(0)).Close
On Error Resume Next
busy = 0
till = Timer + 60
Do
  number = 0
  mail.LoadMessageHeaders
  number = Err.Number
  Err.Clear
  If number = &H8001010A Then
    other.Login
    If Err.Number = &H8001010A Then busy = busy + 1
    Err.Clear
  End If
Loop Until (busy > 0 And number <> &H8001010A) Or Timer > till
Same "in the end", CLng(0), CLng(number)
Same "found it busy", True, busy > 0
Set other = Nothing
