// Keeps the server running until the file named is there.
mail = new ActiveXObject("QuillonInterface.Server");
var sleeper = new ActiveXObject("QuillonTest.Sleeper");
var files = new ActiveXObject("Scripting.FileSystemObject");
WScript.Echo("held");
while (!files.FileExists(WScript.Arguments(0))) sleeper.Sleep(20);
