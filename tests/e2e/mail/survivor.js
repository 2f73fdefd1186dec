// Keeps the server running until the file named is there; then nobody is registered any more.
newServer(WScript.Arguments(0), WScript.Arguments(1));
var files = new ActiveXObject("Scripting.FileSystemObject");
WScript.Echo("held");
while (!files.FileExists(WScript.Arguments(2))) sleeper.Sleep(20);
same("abort", NOT_REGISTERED, failure(function () { mail.AsynchAbort(); }));
mail.NewMessage();
mail.AddRecipientTo("bob@example.com");
mail.subject = "Afterwards";
mail.Send();
files = sleeper = null;
