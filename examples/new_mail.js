// Tells which messages have come into a POP3 mailbox since the last run, in JScript: it remembers
// the unique identifiers of those it has seen in a file.
//
//   cscript //nologo new_mail.js SERVER NAME PASSWORD FILE [PORT]

var INTERNET_MAIL = 10, ITEM_SUBJECT = 4, ITEM_FROM = 9, ITEM_IDENTIFIER = 22;

function seenBefore(files, name) {
  var seen = {};
  if (files.FileExists(name)) {
    var file = files.OpenTextFile(name, 1);
    while (!file.AtEndOfStream) seen[file.ReadLine()] = true;
    file.Close();
  }
  return seen;
}

function identifiers(mail) {
  var list = [];
  mail.LoadMessageIdentifiers();
  for (var i = 0; i < mail.messageCount; ++i) {
    mail.messageIndex = i;
    list.push(String(mail.GetHeaderItemString(ITEM_IDENTIFIER)));
  }
  return list;
}

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = INTERNET_MAIL;
  mail.postOffice = args(0);
  mail.loginName = args(1);
  mail.Password = args(2);
  if (args.length > 4) mail.POPPort = args(4);

  var files = new ActiveXObject("Scripting.FileSystemObject");
  var seen = seenBefore(files, args(3));
  var now = identifiers(mail), fresh = 0;

  mail.LoadMessageHeaders();
  var file = files.CreateTextFile(args(3), true);
  for (var i = 0; i < now.length; ++i) {
    file.WriteLine(now[i]);
    if (seen[now[i]]) continue;
    ++fresh;
    mail.messageIndex = i;
    WScript.Echo("new: " + mail.GetHeaderItemString(ITEM_FROM) + ": " +
                 mail.GetHeaderItemString(ITEM_SUBJECT));
  }
  file.Close();
  mail.Logout();
  WScript.Echo(fresh + " new message(s)");
}

if (WScript.Arguments.length < 4) {
  WScript.Echo("usage: new_mail.js SERVER NAME PASSWORD FILE [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
  WScript.Quit(0);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
