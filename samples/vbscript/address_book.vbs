' Lists the address book of a mail system.
'
'   cscript //nologo address_book.vbs SYSTEM [NAME PASSWORD]
'
' SYSTEM: 1 Simple MAPI, 2 VIM, 3 MHS, 9 Active Messaging, 11 Notes. Internet mail has no book.
Option Explicit
Const EntryGroup = 1

Dim arguments, mail, book, kind
Set arguments = WScript.Arguments
If arguments.Count < 1 Then
  WScript.Echo "usage: address_book.vbs SYSTEM [NAME PASSWORD]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
Check "Quillon is not there"
mail.mailSystem = arguments(0)
If arguments.Count > 2 Then
  mail.loginName = arguments(1)
  mail.Password = arguments(2)
End If
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
book.OpenAddressBook                       ' the first one; or its name, see BookNames
Check "The address book cannot be opened"
Do Until book.EOF
  kind = ""
  If book.EntryType = EntryGroup Then kind = " (a group)"
  WScript.Echo book.Name & " <" & book.Address & ">" & kind
  book.MoveNext
  Check "The walk ends"
Loop
book.CloseAddressBook
Set book = Nothing                         ' it keeps the server alive too
Set mail = Nothing

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set book = Nothing
  Set mail = Nothing
  WScript.Quit 1
End Sub
