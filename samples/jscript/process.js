// Works off the orders in a mailbox: each message whose subject begins with "Order" is written to a
// file, and deleted from the mailbox behind that. Whatever fails in between, no order is lost: at
// worst it is worked off once more, under the same name.
//
//   cscript //nologo process.js SERVER NAME PASSWORD DIRECTORY [PORT]
var MailSystemInternet = 10, HeaderSubject = 4, HeaderUniqueIdentifier = 22;

// An identifier names a message for ever, its number only until the next login.
function identifiers(mail) {
  var list = [];
  mail.LoadMessageIdentifiers();
  for (var i = 0; i < mail.messageCount; ++i) {
    mail.messageIndex = i;
    list.push(String(mail.GetHeaderItemString(HeaderUniqueIdentifier)));
  }
  return list;
}

// The server chose the identifier, so it may hold anything.
function fileName(identifier) {
  for (var name = "", n = 0; n < identifier.length; ++n) {
    name += (256 + identifier.charCodeAt(n) % 256).toString(16).substring(1);
  }
  return name;
}

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = MailSystemInternet;
  mail.postOffice = args(0);
  mail.loginName = args(1);
  mail.Password = args(2);
  if (args.length > 4) mail.POPPort = args(4);
  var orders = identifiers(mail), done = 0;
  mail.LoadMessageHeaders();
  for (var i = 0; i < orders.length; ++i) {
    mail.messageIndex = i;
    if (String(mail.GetHeaderItemString(HeaderSubject)).indexOf("Order") !== 0) continue;
    mail.LoadMessage();
    mail.SaveMessageToFile(args(3) + "\\" + fileName(orders[i]) + ".txt");
    mail.DeleteMessage();                  // the order is safe now
    ++done;
  }
  mail.Logout();                           // only this deletes for good: the server does it at the end
  WScript.Echo(done + " order(s)");
}

if (WScript.Arguments.length < 4) {
  WScript.Echo("usage: process.js SERVER NAME PASSWORD DIRECTORY [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
