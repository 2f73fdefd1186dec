' A Server object for the mail program of the workstation, as ann.
Sub NewServer(system)
  Set mail = CreateObject("QuillonInterface.Server")
  mail.mailSystem = system
  mail.loginName = "ann"
  mail.Password = "secret"
  mail.NewMessage
End Sub
