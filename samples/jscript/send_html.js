// Sends a page with a picture in it.
//
//   cscript //nologo send_html.js SERVER FROM TO PICTURE [PORT]
var MailSystemInternet = 10;

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = MailSystemInternet;
  mail.SMTPServer = args(0);
  if (args.length > 4) mail.SMTPPort = args(4);
  mail.Charset = "auto";                   // the page may hold any character
  mail.NewMessage();
  mail.from = args(1);
  mail.AddRecipientTo(args(2));
  mail.subject = "Prices in \u20AC";
  // Readers without HTML get this text; left empty, it is made from the page.
  mail.Message = "Our new prices are in the picture.";
  mail.HTMLMessage = "<h1>Prices in \u20AC</h1><p><img src='cid:prices' alt='The list'></p>";
  mail.AddInlineFile(args(3), "prices");   // what the page calls cid:prices
  mail.Send();
  WScript.Echo("Sent.");
}

if (WScript.Arguments.length < 4) {
  WScript.Echo("usage: send_html.js SERVER FROM TO PICTURE [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
