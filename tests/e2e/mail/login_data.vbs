' Login data that is missing, and what the server keeps beside itself. The third argument is the port of
' an SMTP server that refuses every message.
Const INI = "C:\Quillon\quillon.ini"
Const LOG_FILE = "C:\Quillon\POPDUMP.TXT"
Dim fso, text
Set fso = CreateObject("Scripting.FileSystemObject")

' Right after a call that lacks something.
Sub Lacking(what)
  Ended what, 544, "Insufficient login information."
End Sub

Function Remembered()
  Remembered = fso.FileExists(INI)
  If Remembered Then Remembered = InStr(fso.OpenTextFile(INI).ReadAll, "SMTPServer=localhost") > 0
End Function

If fso.FileExists(INI) Then fso.DeleteFile INI
NewServer WScript.Arguments(0), WScript.Arguments(1)

' A log that cannot be written is nobody's trouble.
If fso.FileExists(LOG_FILE) Then fso.DeleteFile LOG_FILE
fso.CreateFolder LOG_FILE
mail.InternetLogging = True
mail.LoadMessageHeaders
mail.Logout
mail.InternetLogging = False
fso.DeleteFolder LOG_FILE
mail.AddRecipientTo "bob@example.com"
On Error Resume Next
mail.SMTPServer = ""
mail.Send
Lacking "Send without a server"
mail.ResolveName "bob"
Lacking "ResolveName without a server"
mail.SMTPServer = "localhost"
mail.from = ""
mail.Send
Lacking "Send without a sender"
mail.ResolveName "bob"
Lacking "ResolveName without a sender"
mail.postOffice = ""
mail.LoadMessageHeaders
Lacking "LoadMessageHeaders without a server"
mail.Login
Lacking "Login with half of the data of each"
mail.postOffice = "127.0.0.1"
mail.loginName = ""
mail.LoadMessageIdentifiers
Lacking "LoadMessageIdentifiers without a name"
text = mail.UnreadCount
Lacking "UnreadCount without a name"
mail.Login
Lacking "Login without a name"
mail.loginName = "joe"
mail.LoadMessageHeaders
Ended "with all of it", 0, ""
mail.from = "ann@example.com"

mail.SMTPPort = WScript.Arguments(2)
mail.Send
Ended "refused", 6550, "*"
Same "a server that refused", False, Remembered()
mail.SMTPPort = WScript.Arguments(0)
mail.Send
Ended "taken", 0, ""
Same "a server that worked", True, Remembered()
NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.AddRecipientTo "bob@example.com"
mail.SMTPServer = ""
mail.Send
Lacking "the remembered server, which is only offered"
