' What the AddressBook refuses, and how it gets along with its Server.
Dim book, other, names, count
Set book = CreateObject("QuillonInterface.AddressBook")
Same "none at first", True, book.MailObject Is Nothing
On Error Resume Next
book.OpenAddressBook
RaisedText "no server", "The Address Book MailObject property is not set or is nothing."
count = book.sessionHandle
Raised "no server", 750
NewServer 9
Set book.MailObject = mail
Same "the same object", True, book.MailObject Is mail
Set book.MailObject = CreateObject("Scripting.Dictionary")
Raised "another object", 529
Set book.MailObject = CreateObject("Scripting.Dictionary")
RaisedText "another object", "Invalid property value."
book.MailObject = "a text"
Raised "no object", 13
Same "the old one stays", True, book.MailObject Is mail

count = book.Name
RaisedText "closed", "The Address Book is not open."
book.OpenAddressBook "Nobody's"
RaisedText "no such book", "Address book does not exist."
Same "books", CLng(1), book.BookNames.Count
book.OpenAddressBook LCase(book.BookNames.Item(1))
Raised "by name", 0
Same "first", "Ann Archer", book.Name
Same "found", CInt(-1), book.Find("bOB")
Same "address", "SMTP:bob@desk.example", book.Address
Same "not found", CInt(0), book.Find("Zaphod")
Same "stays", "Bob Baker", book.Name
book.GetAddressBookItems 2, names, count
Same "items", CLng(count), book.Count
Same "item", "SMTP:bob@desk.example", names(1)
book.GetAddressBookItems 3, names, count
RaisedText "item type", "Invalid parameter."
Same "handle", mail.sessionHandle, book.sessionHandle

Set other = CreateObject("QuillonInterface.AddressBook")
Set other.MailObject = mail
other.OpenAddressBook ""
other.MoveLast
Same "apart", "Bob Baker", book.Name
other.MoveNext
Same "behind", "-1 0 []", other.EOF & " " & other.BOF & " [" & other.Name & "]"
Set other = Nothing
mail.Logout
count = book.Name
Raised "logged off", 751
Set book.MailObject = Nothing
Same "let go", True, book.MailObject Is Nothing
Raised "until here", 0

Set book.MailObject = mail
mail.mailSystem = 10
book.OpenAddressBook
RaisedText "Internet", "No Address Book support for this mail system."
mail.mailSystem = 1
book.OpenAddressBook
count = book.Count
RaisedText "nothing chosen", "Address Book function not supported for this mail system."
book.ShowAddressBook
Raised "cancelled", 522
book.ShowAddressBook
RaisedText "cancelled", "User selected cancel in dialog."
mail.mailSystem = 9
book.ShowAddressBook
RaisedText "cancelled", "User selected cancel in dialog."
