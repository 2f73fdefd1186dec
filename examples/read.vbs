' Lists the messages of a POP3 mailbox, and shows the text of one; its attachments are saved in the
' directory for temporary files. Nothing is deleted.
'
'   cscript //nologo read.vbs SERVER NAME PASSWORD [MESSAGE [PORT]]
'
' Without MESSAGE, or with 0, it lists; else it shows the message of that number, from 1. PORT is 110
' when left out.
Option Explicit

Const INTERNET_MAIL = 10
Const ITEM_SUBJECT = 4
Const ITEM_FILES = 6
Const ITEM_FROM = 9
Const ITEM_DATE = 10

Dim arguments, mail, number, i, file
Set arguments = WScript.Arguments
If arguments.Count < 3 Then
  WScript.Echo "usage: read.vbs SERVER NAME PASSWORD [MESSAGE [PORT]]"
  WScript.Quit 2
End If
number = 0
If arguments.Count > 3 Then number = CLng(arguments(3))

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
If Err.Number = 0 Then
  mail.mailSystem = INTERNET_MAIL
  mail.postOffice = arguments(0)
  mail.loginName = arguments(1)
  mail.Password = arguments(2)
  If arguments.Count > 4 Then mail.POPPort = arguments(4)
  mail.dateFormat = "yyyy-mm-dd hh:nn"
  mail.LoadMessageHeaders
End If
Check

If number = 0 Then
  For i = 0 To mail.messageCount - 1
    mail.messageIndex = i
    WScript.Echo i + 1 & "  " & mail.GetHeaderItemString(ITEM_DATE) & "  " & _
                 mail.GetHeaderItemString(ITEM_FROM) & "  " & mail.GetHeaderItemString(ITEM_SUBJECT)
  Next
Else
  mail.messageIndex = number - 1           ' refused when there is no such message
  If Err.Number = 0 Then mail.LoadMessage
  Check
  WScript.Echo "From:    " & mail.from
  WScript.Echo "Date:    " & mail.DateSent
  WScript.Echo "Subject: " & mail.subject
  WScript.Echo ""
  WScript.Echo mail.Message
  For Each file In mail.MessageItems(ITEM_FILES)
    WScript.Echo "Saved:   " & file
  Next
End If
Check
mail.Logout
Set mail = Nothing                         ' lets the server end
WScript.Quit 0

Sub Check()
  If Err.Number <> 0 Then
    WScript.Echo "Error: " & Err.Description & " (" & Err.Number & ")"
    Set mail = Nothing
    WScript.Quit 1
  End If
End Sub
