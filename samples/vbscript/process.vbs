' Works off the orders in a mailbox: each message whose subject begins with "Order" is written to a
' file, and deleted from the mailbox behind that. Whatever fails in between, no order is lost: at
' worst it is worked off once more, under the same name.
'
'   cscript //nologo process.vbs SERVER NAME PASSWORD DIRECTORY [PORT]
Option Explicit
Const MailSystemInternet = 10
Const HeaderSubject = 4, HeaderUniqueIdentifier = 22

Dim arguments, mail, i, identifiers, done
Set arguments = WScript.Arguments
If arguments.Count < 4 Then
  WScript.Echo "usage: process.vbs SERVER NAME PASSWORD DIRECTORY [PORT]"
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

' An identifier names a message for ever, its number only until the next login.
mail.LoadMessageIdentifiers
Check "The mailbox cannot be read"
If mail.messageCount = 0 Then Finish
ReDim identifiers(mail.messageCount - 1)
For i = 0 To UBound(identifiers)
  mail.messageIndex = i
  identifiers(i) = mail.GetHeaderItemString(HeaderUniqueIdentifier)
Next

mail.LoadMessageHeaders
Check "The mailbox cannot be read"
done = 0
For i = 0 To UBound(identifiers)
  mail.messageIndex = i
  If Left(mail.GetHeaderItemString(HeaderSubject), 5) = "Order" Then
    mail.LoadMessage
    Check "Message " & i + 1
    mail.SaveMessageToFile arguments(3) & "\" & FileName(identifiers(i)) & ".txt"
    Check "Message " & i + 1 & " stays in the mailbox"
    mail.DeleteMessage                     ' the order is safe now
    Check "Message " & i + 1 & " is not deleted"
    done = done + 1
  End If
Next
Finish

Sub Finish()
  mail.Logout                              ' only this deletes for good: the server does it at the end
  Check "The messages may be there still"
  WScript.Echo done & " order(s)"
  Set mail = Nothing
  WScript.Quit 0
End Sub

Function FileName(identifier)              ' the server chose it, so it may hold anything
  Dim n, c
  For n = 1 To Len(identifier)
    c = Asc(Mid(identifier, n, 1))
    FileName = FileName & Right("0" & Hex(c), 2)
  Next
End Function

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set mail = Nothing
  WScript.Quit 1
End Sub
