' Sends one message.
'
'   cscript //nologo send.vbs SERVER FROM TO SUBJECT TEXT [PORT]
'
' SERVER takes the mail (SMTP); several recipients are separated by commas, in quotes when blanks stand
' between them. PORT is 25 when left out.
Option Explicit

Dim arguments, mail
Set arguments = WScript.Arguments
If arguments.Count < 5 Then
  WScript.Echo "usage: send.vbs SERVER FROM TO SUBJECT TEXT [PORT]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
If Err.Number = 0 Then
  mail.mailSystem = 10                     ' Internet mail
  mail.SMTPServer = arguments(0)
  If arguments.Count > 5 Then mail.SMTPPort = arguments(5)
  mail.NewMessage                          ' another program may have left one
  mail.from = arguments(1)
  mail.AddRecipientTo arguments(2)
  mail.subject = arguments(3)
  mail.Message = arguments(4)
  mail.Send
End If

Set mail = Nothing                         ' lets the server end

If Err.Number <> 0 Then
  WScript.Echo "Not sent: " & Err.Description & " (" & Err.Number & ")"
  WScript.Quit 1
End If
WScript.Echo "Sent."
WScript.Quit 0
