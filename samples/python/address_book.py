"""Lists the address book of a mail system: 1 Simple MAPI, 2 VIM, 3 MHS, 9 Active Messaging, 11 Notes.
Internet mail has no book."""

import win32com.client

from quillon import EntryGroup, run, server


def main(system, name=None, password=None):
    mail = server()
    mail.mailSystem = int(system)
    if name:
        mail.loginName = name
        mail.Password = password
    book = win32com.client.Dispatch("QuillonInterface.AddressBook")
    book.MailObject = mail
    book.OpenAddressBook()  # the first one; or its name, see BookNames
    while not book.EOF:
        kind = " (a group)" if book.EntryType == EntryGroup else ""
        print(f"{book.Name} <{book.Address}>{kind}")
        book.MoveNext()
    book.CloseAddressBook()


if __name__ == "__main__":
    run(main, "SYSTEM [NAME PASSWORD]")
