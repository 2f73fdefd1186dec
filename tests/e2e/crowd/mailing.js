// Sends and receives, with and without an object registered, while another script meddles with what
// all objects share. Tells of each message what is known of it.
mail = new ActiveXObject("QuillonInterface.Server");
var ended = false, registered = false, sendings = 0;
var listener = {AsynchNotification: function (operation, kind, done, total, message, result, reserved, text) {
  if (kind == 2 && operation != 5) ended = operation + " " + result;
  return 0;
}};

// The server calls back while the script waits in a call. The end of what the other script has
// aborted, or taken the registration of, is not heard.
function untilEnded() {
  var patience = new Date().getTime() + 1000;
  while (registered && !ended && new Date().getTime() < patience) mail.applicationName;
}

function textOf(sending) {
  var name = "text " + sending + ";", lines = sending % 20 ? 3 : 3000, text = [], i;
  for (i = 0; i < lines; ++i) text.push(name + i + "\r\n");
  return text.join("");
}

// The recipient comes first: who empties the message after that takes it away, and nothing is sent.
function send() {
  var sending = ++sendings, code;
  attempt("composing", function () {
    mail.NewMessage();
    mail.AddRecipientTo("bob@example.com");
    mail.from = "ann@example.com";
    mail.subject = "sending " + sending;
    mail.Message = textOf(sending);
  });
  code = attempt("Send", function () {
    mail.Send();
    ended = false;  // nothing of an earlier operation is heard from here on
  });
  if (code === 0) untilEnded();
  // Numbers of the engine, and the abort, come when the message may have left already.
  if (code === 0 && (registered ? ended == "1 -1" : true)) {
    WScript.Echo("success " + sending);
  } else if (code === 0 || code === 522 || code >= 600) {
    WScript.Echo("unknown " + sending);
  } else {
    WScript.Echo("refused " + sending);
  }
}

var calls = {
  LoadMessageHeaders: function () { mail.LoadMessageHeaders(); },
  LoadMessageIdentifiers: function () { mail.LoadMessageIdentifiers(); },
  LoadMessage: function () { mail.messageIndex = pick(3); mail.LoadMessage(); },
  DeleteMessage: function () { mail.messageIndex = 0; mail.DeleteMessage(); },
  ResolveName: function () { mail.ResolveName("ann"); },
  UnreadCount: function () { mail.UnreadCount; },
  Login: function () { mail.Login(); },
  Logout: function () { mail.Logout(); }
};
var often = "LoadMessageHeaders LoadMessage LoadMessageHeaders LoadMessage LoadMessageHeaders LoadMessage " +
            "LoadMessageIdentifiers DeleteMessage ResolveName UnreadCount Login Logout";
var names = often.split(" ");

while (new Date().getTime() < end) {
  attempt("prepare", prepare);
  if (pick(2) == 0) {
    registered = true;
    attempt("AsynchObjectRegister", function () { mail.AsynchObjectRegister(listener, 0, pick(2), 0); });
  } else if (pick(3) == 0 && registered) {
    registered = attempt("AsynchObjectUnregister", function () { mail.AsynchObjectUnregister(listener, 0); }) !== 0;
  }
  if (pick(3) == 0) {
    send();
  } else {
    var name = names[pick(names.length)];
    ended = false;
    if (attempt(name, calls[name]) === 0) untilEnded();
  }
}
report();
listener = null;
