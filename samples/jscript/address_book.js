// Lists the address book of a mail system. SYSTEM: 1 Simple MAPI, 2 VIM, 3 MHS, 9 Active Messaging,
// 11 Notes. Internet mail has no book.
//
//   cscript //nologo address_book.js SYSTEM [NAME PASSWORD]
var EntryGroup = 1;

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = args(0);
  if (args.length > 2) {
    mail.loginName = args(1);
    mail.Password = args(2);
  }
  var book = new ActiveXObject("QuillonInterface.AddressBook");
  book.MailObject = mail;
  book.OpenAddressBook();                  // the first one; or its name, see BookNames
  for (; !book.EOF; book.MoveNext()) {
    WScript.Echo(book.Name + " <" + book.Address + ">" +
                 (book.EntryType == EntryGroup ? " (a group)" : ""));
  }
  book.CloseAddressBook();
}

if (WScript.Arguments.length < 1) {
  WScript.Echo("usage: address_book.js SYSTEM [NAME PASSWORD]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
