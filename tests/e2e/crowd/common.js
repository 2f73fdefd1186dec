// What scripts that get into each other's way share: a choice that can be repeated, and the number
// of every error that came.
var mail;
var seed = Number(WScript.Arguments(3));
var end = new Date().getTime() + 1000 * Number(WScript.Arguments(2));
var numbers = {}, longest = {call: "", time: 0};

function pick(below) {
  seed = (seed * 16807) % 2147483647;
  return seed % below;
}

// The server's code of what the call raised, 0 for success; any other number stands as it is.
function attempt(name, call) {
  var start = new Date().getTime(), code = 0, time, key;
  try {
    call();
  } catch (e) {
    code = (e.number >>> 16) == 0x8004 ? e.number & 0xFFFF : (e.number >>> 0).toString(16);
  }
  time = new Date().getTime() - start;
  if (time > longest.time) longest = {call: name, time: time};
  key = name + " " + code;
  numbers[key] = (numbers[key] || 0) + 1;
  return code;
}

// The settings that others have changed.
function prepare() {
  mail.mailSystem = 10;
  mail.LoginDialog = 0;
  mail.SMTPServer = mail.postOffice = "127.0.0.1";
  mail.SMTPPort = WScript.Arguments(0);
  mail.POPPort = WScript.Arguments(1);
  mail.loginName = "joe";
  mail.Password = "secret";
  mail.MaximumHeaders = 5;
  mail.from = "ann@example.com";
}

function report() {
  for (var key in numbers) WScript.Echo("number " + key + " " + numbers[key]);
  WScript.Echo("longest " + longest.call + " " + longest.time);
}
