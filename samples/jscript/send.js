// Sends a message with a file.
//
//   cscript //nologo send.js SERVER FROM TO SUBJECT TEXT FILE [PORT]
var MailSystemInternet = 10;

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = MailSystemInternet;
  mail.SMTPServer = args(0);
  if (args.length > 6) mail.SMTPPort = args(6);
  mail.NewMessage();                       // another program may have left one
  mail.from = args(1);
  mail.AddRecipientTo(args(2));            // several are separated by commas
  mail.subject = args(3);
  mail.Message = args(4);
  mail.AddAttachment(args(5));             // the whole path
  mail.Send();
  WScript.Echo("Sent.");
}

if (WScript.Arguments.length < 6) {
  WScript.Echo("usage: send.js SERVER FROM TO SUBJECT TEXT FILE [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
