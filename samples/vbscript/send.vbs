' Sends a message with a file.
'
'   cscript //nologo send.vbs SERVER FROM TO SUBJECT TEXT FILE [PORT]
Option Explicit
Const MailSystemInternet = 10

Dim arguments, mail
Set arguments = WScript.Arguments
If arguments.Count < 6 Then
  WScript.Echo "usage: send.vbs SERVER FROM TO SUBJECT TEXT FILE [PORT]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
Check "Quillon is not there"
mail.mailSystem = MailSystemInternet
mail.SMTPServer = arguments(0)
If arguments.Count > 6 Then mail.SMTPPort = arguments(6)
mail.NewMessage                            ' another program may have left one
mail.from = arguments(1)
mail.AddRecipientTo arguments(2)           ' several are separated by commas
mail.subject = arguments(3)
mail.Message = arguments(4)
mail.AddAttachment arguments(5)            ' the whole path
Check "The message cannot be written"
mail.Send
Check "Not sent"
WScript.Echo "Sent."
Set mail = Nothing                         ' lets the server end

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set mail = Nothing
  WScript.Quit 1
End Sub
