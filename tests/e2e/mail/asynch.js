// Operations that go on by themselves, and the object that hears of them.
//
// The server calls back while the script waits in a call. Wine's engine stumbles over that inside a
// function, so the waiting stands outside of functions.
var END = 2, PROGRESS = 3, PATIENCE = 600;
// What the object has heard; in one object, because the engine loses variables that change meanwhile.
var heard = {events: [], ended: null, aborted: null, inside: null};
var i;
var sleeper = new ActiveXObject("QuillonTest.Sleeper");

function Listener() {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    var event = {operation: operation, kind: kind, done: done, total: total, result: result, text: text};
    heard.events.push(event);
    if (kind == END) heard.ended = event;
    if (kind == PROGRESS && done < total) heard.aborted = event;
    if (!heard.inside) {
      heard.inside = codeOf(function () { mail.Send(); }) + "," +
               codeOf(function () { mail.AsynchObjectUnregister(listener, 0); });
    }
    return 0;
  };
}

function begin() {
  heard.events = [];
  heard.ended = heard.aborted = null;
}

function texts() {
  var all = [];
  for (var j = 0; j < heard.events.length; ++j) if (heard.events[j].kind == 1) all.push(heard.events[j].text);
  return all.join("|");
}

function outcome(event) {
  return event ? event.operation + " " + event.result + " " + event.text : "no end";
}

newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.TimeoutProtocol = 20000;
same("abort without an object", 538, codeOf(function () { mail.AsynchAbort(); }));
same("an object without the method", 542, codeOf(function () { mail.AsynchObjectRegister({}, 0, 1, 0); }));
var listener = new Listener();
mail.AsynchObjectRegister(listener, 0, 1, 0);

mail.AddRecipientTo("bob@example.com");
mail.subject = "Short";
mail.Message = "A text.";
begin();
mail.Send();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("send", "1 -1 Message Sent Successfully", outcome(heard.ended));
same("send, steps", "Sending headers...|Connected to server...|Sending HELO...|Logged in successfully.|Mail from...|" +
     "Sending recipients...|Sending message...|Message Sent Successfully", texts());
same("from inside", "541,541", heard.inside);

begin();
mail.LoadMessageHeaders();
same("another one meanwhile", 540, codeOf(function () { mail.Send(); }));
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("headers", "2 -1 Headers loaded successfully.", outcome(heard.ended));
same("headers, counts", "1 of 1", heard.ended.done + " of " + heard.ended.total);
same("count", 1, mail.messageCount);
mail.messageIndex = 0;
begin();
mail.LoadMessage();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("load", "3 -1 Message loaded successfully.", outcome(heard.ended));
same("loaded", "A text.\r\n", mail.Message);

// A long message is heard.aborted in the middle.
var big = "A line of a long message that is heard.aborted.\r\n";
while (big.length < 20 * 1024 * 1024) big += big;
mail.subject = "Long";
mail.Message = big;
begin();
mail.Send();
for (i = 0; i < PATIENCE && !heard.aborted; ++i) sleeper.Sleep(100);
same("progress", true, heard.aborted != null && heard.aborted.total > big.length && !heard.ended);
mail.AsynchAbort();
for (i = 0; i < 5; ++i) sleeper.Sleep(100);
same("aborted", "1 539 Process heard.aborted.", outcome(heard.events[heard.events.length - 2]));
same("confirmed", "5 -1 Asynchronous abort was successful.", outcome(heard.ended));

// Whole, this time.
begin();
mail.Send();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("again", "1 -1 Message Sent Successfully", outcome(heard.ended));
same("again, bytes", heard.ended.total, heard.ended.done);
mail.Message = big = "A text.";

// A failure; then only ends are wanted, with their tags.
mail.Logout();
mail.Password = "wrong";
begin();
mail.LoadMessageHeaders();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("refused", 15, heard.ended.result);
mail.Password = "secret";
mail.AsynchObjectUnregister(listener, 0);
mail.AsynchObjectRegister(listener, 0, 0, 0);
mail.undocumented1 = "|ASYNCH_TAGS|-1";
begin();
mail.LoadMessageIdentifiers();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("ends only", 1, heard.events.length);
same("identifiers", "7 -1 Identifiers loaded successfully. Tag: END", outcome(heard.ended));

// An object that raises errors.
function Thrower() {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    if (kind == END) heard.ended = {operation: operation, result: result, text: text};
    throw new Error("no");
  };
}
var thrower = new Thrower();
mail.AsynchObjectRegister(thrower, 0, 1, 0);
mail.subject = "Last";
begin();
mail.Send();
for (i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
same("thrown at", "1 -1 Message Sent Successfully", outcome(heard.ended));

// A new Server object takes the registration back; calls wait again.
var other = new ActiveXObject("QuillonInterface.Server");
same("not registered", 538, codeOf(function () { mail.AsynchAbort(); }));
mail.SMTPPort = WScript.Arguments(0);
mail.Send();
other = sleeper = null;
