' Waits in Send for a host that says nothing. (No ending: it is killed.)
Dim mail
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 10
mail.SMTPServer = "127.0.0.1"
mail.SMTPPort = WScript.Arguments(0)
mail.TimeoutProtocol = 5000
mail.NewMessage
mail.from = "joe@example.com"
mail.AddRecipientTo "ann@example.com"
If WScript.Arguments.Count > 1 Then mail.AddAttachment WScript.Arguments(1)
mail.Send
