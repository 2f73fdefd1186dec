// What would carry a line break or a NUL into a command is refused.
function send() {
  mail.Send();
}
function attempts(bad) {
  mail.NewMessage();
  mail.AddRecipientTo("Bob <bob@" + bad + "example.com>");
  same("To", 529, codeOf(send));
  mail.NewMessage();
  mail.AddRecipientCc("Bob" + bad + "X-Evil: 1 <bob@example.com>");
  same("name in Cc", 529, codeOf(send));
  mail.NewMessage();
  mail.AddRecipientTo("bob@example.com");
  mail.AddRecipientBcc("bob@example.com" + bad + "eve@example.com");
  same("Bcc", 529, codeOf(send));
  mail.ClearMessageItems(3);
  mail.from = "ann@" + bad + "example.com";
  same("from", 6555, codeOf(send));
  mail.from = "Ann <ann@example.com" + bad + ">";
  same("bracketed from", 6555, codeOf(send));
  mail.from = "Ann" + bad + "X-Evil: 2 <ann@example.com>";
  same("name in from", 6555, codeOf(send));
  mail.from = "ann@example.com";
  same("name", 529, codeOf(function () { mail.ResolveName("bob" + bad + "x"); }));
  mail.loginName = "joe" + bad + "DELE 1";
  same("login name", 529, codeOf(function () { mail.LoadMessageHeaders(); }));
  mail.loginName = "joe";
  mail.Password = "secret" + bad;
  same("password", 529, codeOf(function () { mail.LoadMessageHeaders(); }));
  mail.Password = "secret";
}
newServer(WScript.Arguments(0), WScript.Arguments(1));
var breaks = ["\r\n", "\r", "\n", "\0"];
for (var i = 0; i < breaks.length; i++) {
  attempts(breaks[i]);
}
