' What the protocol log tells of, once each: nobody there, words that nobody waits for, a message of
' many parts. Arguments: the ports of a host, of servers that speak at the wrong time, and of nobody.
Dim nobody
nobody = WScript.Arguments(4)
NewServer nobody, nobody
mail.InternetLogging = True
mail.AddRecipientTo "bob@example.com"
mail.Message = "A text."
mail.AddAlternative "C:\page.htm", "text/html", 0
mail.AddAttachment "C:\page.htm"
On Error Resume Next
mail.mailSystem = 7
mail.Login
Ended "SMTP", 6002, "*"
mail.mailSystem = 6
mail.Login
Ended "POP", 6002, "*"
On Error GoTo 0

mail.mailSystem = 7
mail.SMTPPort = WScript.Arguments(2)
mail.Login
mail.Logout
mail.mailSystem = 6
mail.POPPort = WScript.Arguments(3)
mail.Login
mail.Logout

mail.mailSystem = 10
mail.SMTPPort = WScript.Arguments(0)
mail.Send
mail.InternetLogging = False
