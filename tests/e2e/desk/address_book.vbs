' Walks the first address book of a mail system there and back again, holding nothing but the
' AddressBook, and writes what it finds. Arguments: the mail system; "choose" when the entries are
' chosen in a window first; the post office, where there is one.
Dim book, there, back

Function Entry()
  Entry = book.Name & "|" & book.Address & "|" & book.EntryType
End Function

NewServer WScript.Arguments(0)
If WScript.Arguments.Count > 2 Then mail.postOffice = WScript.Arguments(2)
Set book = CreateObject("QuillonInterface.AddressBook")
Set book.MailObject = mail
Set mail = Nothing
book.OpenAddressBook
If WScript.Arguments(1) = "choose" Then book.ShowAddressBook
Do Until book.EOF
  WScript.Echo Entry()
  there = there & vbLf & Entry()
  book.MoveNext
Loop
book.MovePrevious
Do Until book.BOF
  back = vbLf & Entry() & back
  book.MovePrevious
Loop
If there <> back Then WScript.Echo "the way back is another one:" & back
book.MailObject.NewMessage
book.CloseAddressBook
Set book = Nothing
