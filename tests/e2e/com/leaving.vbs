' Deletes the second message and goes without a Logout.
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 6
mail.postOffice = "127.0.0.1"
mail.POPPort = WScript.Arguments(0)
mail.loginName = "joe"
mail.Password = "secret"
mail.LoadMessageHeaders
Same "headers", CLng(2), mail.messageCount
mail.messageIndex = 1
mail.DeleteMessage
