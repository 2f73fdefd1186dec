' Saves the attachments of all messages of a mailbox in a directory. Nothing is deleted.
'
'   cscript //nologo save_attachments.vbs SERVER NAME PASSWORD DIRECTORY [PORT]
Option Explicit
Const MailSystemInternet = 10
Const ItemAttachments = 6, ItemAttachmentNames = 7

Dim arguments, mail, i, n, files, names, count
Set arguments = WScript.Arguments
If arguments.Count < 4 Then
  WScript.Echo "usage: save_attachments.vbs SERVER NAME PASSWORD DIRECTORY [PORT]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
Check "Quillon is not there"
mail.mailSystem = MailSystemInternet
mail.postOffice = arguments(0)
mail.loginName = arguments(1)
mail.Password = arguments(2)
If arguments.Count > 4 Then mail.POPPort = arguments(4)
mail.AttachmentDirectory = arguments(3)    ' the files are written there as messages are loaded
mail.LoadMessageHeaders
Check "The mailbox cannot be read"
For i = 0 To mail.messageCount - 1
  mail.messageIndex = i
  mail.LoadMessage
  Check "Message " & i + 1
  mail.GetMessageItems ItemAttachments, files, count
  mail.GetMessageItems ItemAttachmentNames, names, count
  For n = 0 To count - 1
    WScript.Echo names(n) & ": " & files(n)  ' a name that is there already gets another file
  Next
Next
mail.Logout
Set mail = Nothing

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set mail = Nothing
  WScript.Quit 1
End Sub
