// Saves the attachments of all messages of a mailbox in a directory. Nothing is deleted.
//
//   cscript //nologo save_attachments.js SERVER NAME PASSWORD DIRECTORY [PORT]
var MailSystemInternet = 10, ItemAttachments = 6, ItemAttachmentNames = 7;

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = MailSystemInternet;
  mail.postOffice = args(0);
  mail.loginName = args(1);
  mail.Password = args(2);
  if (args.length > 4) mail.POPPort = args(4);
  mail.AttachmentDirectory = args(3);      // the files are written there as messages are loaded
  mail.LoadMessageHeaders();
  for (var i = 0; i < mail.messageCount; ++i) {
    mail.messageIndex = i;
    mail.LoadMessage();
    // There are no arrays by reference here: GetMessageItem reads one item at a time.
    for (var n = 0; n < mail.GetMessageItemCount(ItemAttachments); ++n) {
      WScript.Echo(mail.GetMessageItem(ItemAttachmentNames, n) + ": " +
                   mail.GetMessageItem(ItemAttachments, n));
    }
  }
  mail.Logout();
}

if (WScript.Arguments.length < 4) {
  WScript.Echo("usage: save_attachments.js SERVER NAME PASSWORD DIRECTORY [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
