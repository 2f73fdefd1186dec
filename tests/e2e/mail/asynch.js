// Operations that go on by themselves, with an object that hears of them and one that asks too much.
newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.TimeoutProtocol = 20000;
same("abort without an object", NOT_REGISTERED, failure(function () { mail.AsynchAbort(); }));
same("an object without the method", "542 Unable to register asynchronous notification object.",
     failure(function () { mail.AsynchObjectRegister({}, 0, 1, 0); }));
var listener = new Listener();
mail.AsynchObjectRegister(listener, 0, 1, 0);

mail.AddRecipientTo("bob@example.com");
mail.subject = "Short";
mail.Message = "A text.";
begin();
mail.Send();
untilEnded();
same("send", "1 -1 Message Sent Successfully", said(2));
same("send, steps", "Sending headers...|Connected to server...|Sending HELO...|Logged in successfully.|Mail from...|" +
     "Sending recipients...|Sending message...|Message Sent Successfully", steps());

begin();
mail.LoadMessageHeaders();
// 541 when the object is being called
var meanwhile = failure(function () { mail.Send(); });
same("another one meanwhile", meanwhile == IN_CALLBACK ? IN_CALLBACK : IN_PROGRESS, meanwhile);
meanwhile = failure(function () { mail.AsynchObjectUnregister(listener, 0); });
same("taken back meanwhile", meanwhile == IN_CALLBACK ? IN_CALLBACK : IN_PROGRESS, meanwhile);
untilEnded();
same("headers", "2 -1 Headers loaded successfully.", said(2));
same("headers, counts", "1 of 1", counts());
same("count", 1, mail.messageCount);
mail.messageIndex = 0;
begin();
mail.LoadMessage();
untilEnded();
same("load", "3 -1 Message loaded successfully.", said(2));
same("loaded", "A text.\r\n", mail.Message);

// A long message is aborted in the middle.
var big = "A line of a long message that is aborted.\r\n";
while (big.length < 20 * 1024 * 1024) big += big;
mail.subject = "Long";
mail.Message = big;
begin();
mail.Send();
for (var i = 0; i < PATIENCE && !heard.partly; ++i) sleeper.Sleep(100);
same("not ended", null, heard.ended);
mail.AsynchAbort();
for (i = 0; i < 5; ++i) sleeper.Sleep(100);
same("aborted", "1 539 Process aborted.|5 -1 Asynchronous abort was successful.", said(2));

// Whole, this time.
begin();
mail.Send();
untilEnded();
same("again", "1 -1 Message Sent Successfully", said(2));
same("again, bytes", counts().split(" of ")[1], counts().split(" of ")[0]);
mail.Message = big = "A text.";

// A large file is packed before anything is sent; that ends at once, too.
mail.attachmentEncoding = 2 + 64;
mail.undocumented1 = "|TEMPDIR|C:\\Temporary";
mail.AddAttachment(WScript.Arguments(2));
mail.subject = "Packed";
begin();
mail.Send();
for (i = 0; i < PATIENCE && !heard.partly; ++i) sleeper.Sleep(50);
same("packing", "1 -1 Encoding attachments...", said(1));
same("nothing done yet", "0", counts().split(" of ")[0]);
// Calls get their turns between the blocks: packing the file takes longer than all of these.
for (i = 0; i < 20; ++i) same("a property meanwhile", "Packed", mail.subject);
same("still packing", "1 -1 Encoding attachments...", said(1));
mail.AsynchAbort();
for (i = 0; i < 5; ++i) sleeper.Sleep(100);
same("packing aborted", "1 539 Process aborted.|5 -1 Asynchronous abort was successful.", said(2));
mail.ClearMessageItems(6);
mail.attachmentEncoding = 2;

// A failure; then only ends are wanted, with their tags.
mail.Logout();
mail.Password = "wrong";
begin();
mail.LoadMessageHeaders();
untilEnded();
same("refused", "2 15 ", said(2).substr(0, 5));
mail.Password = "secret";
mail.AsynchObjectUnregister(listener, 0);
mail.AsynchObjectRegister(listener, 0, 0, 0);
mail.undocumented1 = "|ASYNCH_TAGS|-1";
begin();
mail.LoadMessageIdentifiers();
untilEnded();
same("ends only", "", said(1) + said(3));
same("identifiers", "7 -1 Identifiers loaded successfully. Tag: END", said(2));
begin();
mail.AsynchAbort();  // there is nothing to abort, but it is told all the same
untilEnded();
same("abort, tags", "7 539 Process aborted. Tag: AAP1|5 -1 Asynchronous abort was successful. Tag: AAP2",
     said(2));
mail.undocumented1 = "|ASYNCH_TAGS|0";

// An object that raises errors.
function Thrower() {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    heard.log += kind + "/" + operation + " " + result + " " + text + "/\n";
    if (kind == 2) heard.ended = 1;
    throw new Error("no");
  };
}
var thrower = new Thrower();
mail.AsynchObjectRegister(thrower, 0, 1, 0);
mail.subject = "Last";
begin();
mail.Send();
untilEnded();
same("thrown at", "1 -1 Message Sent Successfully", said(2));

// What it may not do from inside.
function Asker() {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    if (heard.log == "") {
      heard.log = failure(function () { mail.Send(); }) + "|" +
                  failure(function () { mail.AsynchObjectUnregister(asker, 0); });
    }
    if (kind == 2) heard.ended = 1;
    return 0;
  };
}
var asker = new Asker();
mail.Logout();  // the host stalls at the second message of a connection
mail.AsynchObjectRegister(asker, 0, 1, 0);
begin();
mail.Send();
untilEnded();
same("from inside", IN_CALLBACK + "|" + IN_CALLBACK, heard.log);

// A new Server object takes the registration back; calls wait again.
var other = new ActiveXObject("QuillonInterface.Server");
same("not registered", NOT_REGISTERED, failure(function () { mail.AsynchAbort(); }));
mail.Logout();
mail.SMTPPort = WScript.Arguments(0);
mail.Send();
other = sleeper = null;
