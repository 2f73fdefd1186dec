// Sends a file while the script goes on, tells how far it is, and gives up after some seconds.
//
//   cscript //nologo asynchronous.js SERVER FROM TO FILE SECONDS [PORT]
var MailSystemInternet = 10, OperationSend = 1, NotifyAll = 1;
var EventStatus = 1, EventEnd = 2, EventProgress = 3;

function Listener() {
  this.ended = false;
  // Called while the script sleeps, or waits for the server. Short: the sending waits for it.
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    if (kind == EventStatus) WScript.Echo(text);
    if (kind == EventProgress && total > 0) WScript.Echo(done + " of " + total + " bytes");
    if (kind == EventEnd && operation == OperationSend) {
      this.result = result;                // -1: sent
      this.why = text;
      this.ended = true;
    }
    return 0;
  };
}

function main(args) {
  var mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = MailSystemInternet;
  mail.SMTPServer = args(0);
  if (args.length > 5) mail.SMTPPort = args(5);
  mail.NewMessage();
  mail.from = args(1);
  mail.AddRecipientTo(args(2));
  mail.AddAttachment(args(3));
  var listener = new Listener(), aborted = false;
  mail.AsynchObjectRegister(listener, 0, NotifyAll, 0);
  mail.Send();                             // returns at once
  var until = new Date().getTime() + 1000 * args(4);
  while (!listener.ended) {
    WScript.Sleep(50);
    if (new Date().getTime() > until && !aborted) {
      aborted = true;
      mail.AsynchAbort();
    }
  }
  WScript.Echo(listener.result == -1 ? "Sent." :
               "Not sent: " + listener.why + " (" + listener.result + ")");
  mail.AsynchObjectUnregister(listener, 0);
}

if (WScript.Arguments.length < 5) {
  WScript.Echo("usage: asynchronous.js SERVER FROM TO FILE SECONDS [PORT]");
  WScript.Quit(2);
}
try {
  main(WScript.Arguments);
} catch (e) {
  WScript.Echo("Error: " + e.message + " (" + (e.number & 0xFFFF) + ")");
  WScript.Quit(1);
}
