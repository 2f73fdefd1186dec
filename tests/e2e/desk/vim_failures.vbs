' Each call of VIM fails in its turn, as the fault file says, and the server serves on. Argument: a
' directory with a file to send and for received ones.
Dim disk
Set disk = CreateObject("Scripting.FileSystemObject")

Sub Faults(text)
  Dim file
  Set file = disk.CreateTextFile("C:\QuillonDesk\faults.txt", True)
  file.WriteLine text
  file.Close
End Sub

' A message that has just been listed, and one that could be sent.
Sub Prepare
  NewServer 2
  mail.AttachmentDirectory = WScript.Arguments(0)
  mail.AddRecipientTo "bob"
  mail.AddAttachment WScript.Arguments(0) & "\one.bin"
  mail.subject = "not to be sent"
  mail.Message = "text"
End Sub

Sub Act(action)
  Select Case action
    Case "Login" mail.Login
    Case "List" mail.LoadMessageHeaders
    Case "Load" mail.LoadMessage
    Case "Delete" mail.DeleteMessage
    Case "Move" mail.MoveMessage "Archive"
    Case "Count" mail.UnreadCount
    Case "Send" mail.Send
    Case "Name" mail.ResolveName "bob"
    Case "Logout" mail.Logout
  End Select
End Sub

Sub Failing(fault, action, number, text)
  Dim found
  Prepare
  If action <> "Login" And action <> "List" Then mail.LoadMessageHeaders
  Faults fault
  On Error Resume Next
  Act action
  found = (Err.Number - vbObjectError) & " " & Err.Description
  On Error GoTo 0
  Faults ""
  Same action & " with " & fault, number & " " & text, found
  mail.LoadMessageHeaders
  Same "after " & fault, CLng(1), mail.messageCount
  mail.Logout
End Sub

Sub Decoded(number, text)
  Dim system, code, own, found
  mail.DecodeError vbObjectError + number, system, code, own, found
  Same "decoded " & number, "2 " & text, system & " " & found
End Sub

Sub LoggingIn(fault, office, name, password, expected)
  Dim found
  NewServer 2
  mail.LoginDialog = False
  mail.postOffice = office
  mail.loginName = name
  mail.Password = password
  Faults fault
  On Error Resume Next
  mail.Login
  found = "0"
  If Err.Number <> 0 Then found = (Err.Number - vbObjectError) & " " & Err.Description
  On Error GoTo 0
  Same fault & " in " & office & " as " & name & " with " & password, expected, found
  mail.Logout
End Sub
