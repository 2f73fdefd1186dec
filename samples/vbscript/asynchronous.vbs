' Sends a file while the script goes on, tells how far it is, and gives up after some seconds.
'
'   cscript //nologo asynchronous.vbs SERVER FROM TO FILE SECONDS [PORT]
Option Explicit
Const MailSystemInternet = 10
Const OperationSend = 1
Const EventStatus = 1, EventEnd = 2, EventProgress = 3
Const NotifyAll = 1

Class Listener
  ' Called while the script sleeps. Short: the sending waits for it.
  Public Function AsynchNotification(operation, kind, done, total, message, result, reserved, text)
    If kind = EventStatus Then WScript.Echo text
    If kind = EventProgress And total > 0 Then WScript.Echo done & " of " & total & " bytes"
    If kind = EventEnd And operation = OperationSend Then
      outcome = result                     ' -1: sent
      why = text
      ended = True
    End If
    AsynchNotification = 0
  End Function
End Class

Dim arguments, mail, ended, outcome, why, begun, aborted
Set arguments = WScript.Arguments
If arguments.Count < 5 Then
  WScript.Echo "usage: asynchronous.vbs SERVER FROM TO FILE SECONDS [PORT]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
Check "Quillon is not there"
mail.mailSystem = MailSystemInternet
mail.SMTPServer = arguments(0)
If arguments.Count > 5 Then mail.SMTPPort = arguments(5)
mail.NewMessage
mail.from = arguments(1)
mail.AddRecipientTo arguments(2)
mail.AddAttachment arguments(3)
mail.AsynchObjectRegister New Listener, 0, NotifyAll, 0
Check "The message cannot be written"
mail.Send                                  ' returns at once
Check "Not sent"
begun = Timer
Do Until ended
  WScript.Sleep 50
  If Timer - begun > CDbl(arguments(4)) And Not aborted Then
    aborted = True
    mail.AsynchAbort
  End If
Loop
If outcome = -1 Then WScript.Echo "Sent." Else WScript.Echo "Not sent: " & why & " (" & outcome & ")"
mail.AsynchObjectUnregister mail, 0
Set mail = Nothing

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set mail = Nothing
  WScript.Quit 1
End Sub
