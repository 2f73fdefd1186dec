// What an object hears of each operation, and objects that behave badly. The mailbox holds one
// message with an attachment; the third argument is a file to attach.
newServer(WScript.Arguments(0), WScript.Arguments(1));

// Runs an operation to its end.
function run(operation) {
  begin();
  operation();
  untilEnded();
}

function told(what, expectedSteps, expectedEnd) {
  same(what + ", steps", expectedSteps, steps());
  same(what + ", end", expectedEnd, said(2));
}

mail.AsynchObjectRegister(new Listener(), 0, 1, 0);
mail.AddRecipientTo("bob@example.com");
mail.AddAlternative(WScript.Arguments(2), "text/html", 0);
mail.AddAttachment(WScript.Arguments(2));
run(function () { mail.Send(); });
told("send", "Sending headers...|Connected to server...|Sending HELO...|Logged in successfully.|Mail from...|" +
     "Sending recipients...|Sending message...|Sending alternatives...|Sending attachments...|" +
     "Message Sent Successfully", "1 -1 Message Sent Successfully");
run(function () { mail.LoadMessageIdentifiers(); });
told("identifiers", "Connected to server...|Logged in successfully.|Loading message identifiers...|" +
     "Identifiers loaded successfully.", "7 -1 Identifiers loaded successfully.");
run(function () { mail.LoadMessageHeaders(); });
told("headers", "Loading message headers...|Headers loaded successfully.",
     "2 -1 Headers loaded successfully.");
mail.messageIndex = 0;
run(function () { mail.LoadMessage(); });
told("load", "Loading message...|Receiving message...|Receiving attachments...|Decoding attachments...|" +
     "Message loaded successfully.", "3 -1 Message loaded successfully.");
run(function () { mail.DeleteMessage(); });
told("delete", "Deleting message...|Message deleted successfully.",
     "4 -1 Message deleted successfully.");
mail.messageIndex = 1;  // that of the message sent above
run(function () { mail.DeleteMessage(); });
mail.Logout();
run(function () { mail.LoadMessageHeaders(); });
told("empty", "Connected to server...|Logged in successfully.|Loading message headers...|Mailbox is empty.",
     "2 -1 Mailbox is empty.");
same("empty, headers", 0, mail.messageCount);
mail.Logout();
mail.Password = "wrong";
run(function () { mail.LoadMessageHeaders(); });
same("refused", "Failed to Logon to POP server.", steps());
mail.Password = "secret";
run(function () { mail.Login(); });
told("login", "Connected to server...|Logged in successfully.|" +
     "Connected to server...|Sending HELO...|Logged in successfully.", "6 -1 Logged in successfully.");

// An object for the next operation: `action` is called with each kind and text.
function Doing(action) {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    heard.log += kind + "/" + operation + " " + result + " " + text + "/\n";
    action(kind, text);
    if (kind == 2) heard.ended = 1;
    return 0;
  };
}

function sendWith(what, action, expectedEnd) {
  mail.AsynchObjectRegister(new Doing(action), 0, 1, 0);
  mail.NewMessage();
  mail.AddRecipientTo("bob@example.com");
  mail.subject = what;
  run(function () { mail.Send(); });
  same(what, expectedEnd, said(2));
}

var SENT = "1 -1 Message Sent Successfully";
// It keeps the server waiting for longer than the server may keep it waiting.
mail.TimeoutProtocol = 2000;
sendWith("blocks", function (kind, text) {
  if (text == "Sending recipients...") sleeper.Sleep(3000);
}, SENT);
mail.TimeoutProtocol = 10000;
sendWith("reads", function (kind, text) {
  if (text == "Mail from...") same("a property from inside", "reads", mail.subject);
}, SENT);
sendWith("aborts", function (kind, text) {
  if (text == "Sending recipients...") mail.AsynchAbort();
}, "1 539 Process aborted.|5 -1 Asynchronous abort was successful.");
sendWith("last", function () {}, SENT);

// The fourth recipient of a connection is refused.
var REFUSED = "One or more bad recipients, but message was sent to good recipients.";
mail.AsynchObjectRegister(new Listener(), 0, 1, 0);
mail.NewMessage();
mail.AddRecipientTo("ann@example.com,bob@example.com,carl@example.com");
mail.subject = "to some";
run(function () { mail.Send(); });
told("to some", "Sending headers...|Mail from...|Sending recipients...|Sending message...|" +
     "Message Sent Successfully|" + REFUSED, "1 20 " + REFUSED);
same("to some, refused", "carl@example.com", mail.GetMessageItemString(11));
sleeper = null;
