' Sends one message through the mail program of the workstation, or lists that program's inbox.
'
'   cscript //nologo office.vbs SYSTEM LOGIN PASSWORD [TO SUBJECT TEXT [FILE]]
'
' SYSTEM is 1 for Simple MAPI and 9 for Active Messaging. TO is a name of the mail program's address
' book, or an address; several are separated by commas. Without it the inbox is listed.
Option Explicit

Const ITEM_SUBJECT = 4, ITEM_FROM = 9, ITEM_DATE = 10

Dim arguments, mail, index
Set arguments = WScript.Arguments
If arguments.Count < 3 Or arguments.Count = 4 Or arguments.Count = 5 Then
  WScript.Echo "usage: office.vbs SYSTEM LOGIN PASSWORD [TO SUBJECT TEXT [FILE]]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
If Err.Number = 0 Then
  mail.mailSystem = arguments(0)
  mail.loginName = arguments(1)
  mail.Password = arguments(2)
  mail.LoginDialog = False                 ' there may be nobody to answer it
  If arguments.Count > 3 Then Send Else List
  If Err.Number = 0 Then mail.Logout
End If

Set mail = Nothing                         ' lets the server end

If Err.Number <> 0 Then
  WScript.Echo "Failed: " & Err.Description & " (" & Err.Number & ")"
  WScript.Quit 1
End If
WScript.Quit 0

Sub Send
  mail.NewMessage                          ' another program may have left one
  mail.AddRecipientTo arguments(3)
  mail.subject = arguments(4)
  mail.Message = arguments(5)
  If arguments.Count > 6 Then mail.AddAttachment arguments(6)
  mail.Send
  WScript.Echo "Sent."
End Sub

Sub List
  mail.LoadMessageHeaders
  For index = 0 To mail.messageCount - 1
    mail.messageIndex = index
    WScript.Echo mail.GetHeaderItemString(ITEM_DATE) & "  " & mail.GetHeaderItemString(ITEM_FROM) & _
                 "  " & mail.GetHeaderItemString(ITEM_SUBJECT)
  Next
End Sub
