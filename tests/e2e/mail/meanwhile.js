// Works while the object of another program does not return.
newServer(WScript.Arguments(0), WScript.Arguments(1));
var folder = WScript.Arguments(2) + "\\";
var files = new ActiveXObject("Scripting.FileSystemObject");
WScript.Echo("held");
while (!files.FileExists(folder + "blocked")) sleeper.Sleep(20);
mail.applicationName = "meanwhile";
same("a property", "meanwhile", mail.applicationName);
same("mail", IN_CALLBACK, failure(function () { mail.LoadMessageHeaders(); }));
same("taking it back", IN_CALLBACK, failure(function () { mail.AsynchObjectUnregister(mail, 0); }));
files.CreateTextFile(folder + "go on").Close();
files = sleeper = null;
