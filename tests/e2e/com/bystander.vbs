' Works while another client's call waits: properties at once, mail when the engine is free again.
Dim tries
Set mail = CreateObject("QuillonInterface.Server")
mail.applicationName = "bystander"
Same "property", "bystander", mail.applicationName
mail.mailSystem = 10
mail.postOffice = "127.0.0.1"
mail.POPPort = WScript.Arguments(0)
mail.loginName = "joe"
mail.Password = "secret"
On Error Resume Next
mail.LoadMessageHeaders
If WScript.Arguments(1) = "busy" Then
  Raised "mail while the engine works", 540
Else
  ' The lost client's call ends with its time-out.
  Do While Err.Number = vbObjectError + 540 And tries < 20000
    Err.Clear
    tries = tries + 1
    mail.LoadMessageHeaders
  Loop
  Raised "mail afterwards", 0
  Same "headers", CLng(1), mail.messageCount
  mail.Logout
End If
On Error GoTo 0
