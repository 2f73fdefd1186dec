' Sends a message many times and says how many go out in an hour.
'
'   cscript //nologo many.vbs SERVER FROM TO COUNT [PORT]
'
' To measure how fast a server takes mail, on one connection. Only send where the messages disturb
' nobody.
Option Explicit

Dim arguments, mail, count, number, began, seconds
Set arguments = WScript.Arguments
If arguments.Count < 4 Then
  WScript.Echo "usage: many.vbs SERVER FROM TO COUNT [PORT]"
  WScript.Quit 2
End If
count = CLng(arguments(3))

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
If Err.Number = 0 Then
  mail.mailSystem = 10                     ' Internet mail
  mail.SMTPServer = arguments(0)
  If arguments.Count > 4 Then mail.SMTPPort = arguments(4)
  mail.ProgressBar = 0
  mail.NewMessage
  mail.from = arguments(1)
  mail.AddRecipientTo arguments(2)
  mail.Message = String(2048, "x")
  mail.Login                               ' not part of what is measured
  began = Timer
  For number = 1 To count
    If Err.Number <> 0 Then Exit For
    mail.subject = "Message " & number
    mail.Send
  Next
  seconds = Timer - began                  ' wrong across midnight
End If

Set mail = Nothing                         ' lets the server end

If Err.Number <> 0 Then
  WScript.Echo "Not sent: " & Err.Description & " (" & Err.Number & ")"
  WScript.Quit 1
End If
WScript.Echo count & " messages in " & FormatNumber(seconds, 1) & " s: " & _
             Int(count / seconds * 3600) & " in an hour"
WScript.Quit 0
