// An object that does not return until another program says so by a file.
newServer(WScript.Arguments(0), WScript.Arguments(1));
var folder = WScript.Arguments(2) + "\\";
var files = new ActiveXObject("Scripting.FileSystemObject");
mail.TimeoutProtocol = 2000;
mail.AsynchObjectRegister({AsynchNotification: function (operation, kind, done, total, message, result, reserved, text) {
  if (text == "Mail from...") {
    files.CreateTextFile(folder + "blocked").Close();
    while (!files.FileExists(folder + "go on")) sleeper.Sleep(20);
  }
  if (kind == 2) {
    heard.log = text;
    heard.ended = 1;
  }
  return 0;
}}, 0, 1, 0);
mail.AddRecipientTo("bob@example.com");
mail.subject = "Blocked";
mail.Send();
untilEnded();
same("end", "Message Sent Successfully", heard.log);
files = sleeper = null;
