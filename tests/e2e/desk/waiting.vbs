' Loads headers while the mail program shows a window, so to say. Argument: a file to make before.
NewServer 1
mail.Login
CreateObject("Scripting.FileSystemObject").CreateTextFile(WScript.Arguments(0)).Close
mail.LoadMessageHeaders
Same "headers", True, mail.messageCount > 0
