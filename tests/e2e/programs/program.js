// One of several programs: makes an object for each message, sends, and now and then takes its own
// mail out of the mailbox that all share. They write one at a time, as the documents ask them to.
var smtp = WScript.Arguments(0), pop = WScript.Arguments(1), name = WScript.Arguments(2);
var count = Number(WScript.Arguments(3)), seed = Number(WScript.Arguments(4));
var fso = new ActiveXObject("Scripting.FileSystemObject");
var LOCK = "C:\\writing";
var mail, sleeper, wanted = {}, missing = 0;

function pick(below) {
  seed = (seed * 16807) % 2147483647;
  return seed % below;
}

function codeOf(call) {
  try {
    call();
  } catch (e) {
    return (e.number >>> 16) == 0x8004 ? e.number & 0xFFFF : (e.number >>> 0).toString(16);
  }
  return 0;
}

function lock() {
  for (;;) {
    try {
      fso.CreateTextFile(LOCK, false).Close();
      return;
    } catch (e) {
      if (sleeper) sleeper.Sleep(3);
    }
  }
}

function unlock() {
  fso.DeleteFile(LOCK);
}

function release() {
  mail = null;
  CollectGarbage();
}

// Now and then long enough for the servers to close what is idle.
function idle(onceIn) {
  if (pick(onceIn) == 0) sleeper.Sleep(pick(500));
}

function settings() {
  mail.mailSystem = 10;
  mail.LoginDialog = 0;
  mail.SMTPServer = mail.postOffice = "127.0.0.1";
  mail.SMTPPort = smtp;
  mail.POPPort = pop;
  mail.loginName = "joe";
  mail.Password = "secret";
  mail.MaximumHeaders = 100000;
}

function textOf(number) {
  var line = name + " " + number + "\r\n", text = "";
  for (var lines = number % 50 == 0 ? 500 : 3; lines > 0; --lines) text += line;
  return text;
}

function send(number) {
  var code;
  mail = new ActiveXObject("QuillonInterface.Server");
  if (mail.Message != "" || mail.GetMessageItemCount(1) != 0) {
    // A message of somebody else is under way only when he does not hold the lock.
    mail.NewMessage();
    WScript.Echo("left over");
  }
  settings();
  mail.NewMessage();
  mail.from = name + "@example.com";
  mail.AddRecipientTo(name + "." + number + "@example.com");
  mail.AddRecipientBcc("boss." + name + "@example.com");
  mail.subject = name + " " + number;
  mail.Message = textOf(number);
  idle(6);
  code = codeOf(function () { mail.Send(); });
  if (code == 0) {
    wanted[number] = true;
    ++missing;
  }
  WScript.Echo((code == 0 ? "sent " : "failed " + code + " ") + name + " " + number);
  mail.NewMessage();
}

// A connection that is lost may be lost in any of these calls; they are made again then. A session
// takes few messages, so that it has a chance to end before an impatient server ends it.
var MOST = 8;
function receive() {
  var code, index, found, took = [];
  mail = new ActiveXObject("QuillonInterface.Server");
  settings();
  code = codeOf(function () { mail.LoadMessageHeaders(); });
  for (index = 0; code == 0 && index < mail.messageCount && took.length < MOST; ++index) {
    mail.messageIndex = index;
    found = /^(\w+) (\d+)$/.exec(mail.GetHeaderItemString(4));
    if (!found || found[1] != name || !wanted[found[2]]) continue;
    idle(30);
    code = codeOf(function () { mail.LoadMessage(); });
    if (code != 0) break;
    if (mail.Message.replace(/(\r\n)+$/, "\r\n") != textOf(Number(found[2]))) WScript.Echo("wrong text " + found[0]);
    idle(30);
    code = codeOf(function () { mail.DeleteMessage(); });
    if (code != 0) break;
    took.push(found[2]);
  }
  // Final only when the server says so.
  var left = codeOf(function () { mail.Logout(); });
  mail.NewMessage();
  if (code == 0 && left == 0) {
    for (index = 0; index < took.length; ++index) {
      WScript.Echo("received " + name + " " + took[index]);
      delete wanted[took[index]];
      --missing;
    }
  } else {
    WScript.Echo("again " + code + " " + left);
  }
}

function turn(work) {
  lock();
  try {
    work();
    if (pick(2) == 0) release();
  } finally {
    unlock();
  }
  idle(6);
  release();
}

// cscript ends without a word at an error that nobody catches.
try {
  // One after the other: of several at once each may get a process, and one that ends at once.
  lock();
  sleeper = new ActiveXObject("QuillonTest.Sleeper");
  unlock();
  for (var number = 1; number <= count; ++number) {
    turn(function () { send(number); });
    if (number % 5 == 0 || number == count) turn(receive);
  }
  for (var attempts = 0; missing > 0 && attempts < 100; ++attempts) turn(receive);
  if (missing > 0) WScript.Echo("missing " + missing);
} catch (e) {
  WScript.Echo("uncaught " + (e.number >>> 0).toString(16) + " " + e.message);
}
