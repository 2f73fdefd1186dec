' What is called while a conversation is played.
'
' Of the last call: the number, 0 when it went well, and the text of its error.
Dim outcome, said
Dim temporary, received, goodSmtp, goodPop, fso
Set fso = CreateObject("Scripting.FileSystemObject")

' Under On Error Resume Next, right after a call. No temporary file may be left, nor, when it
' failed, a file of the message.
Sub Called(what, filesBefore)
  outcome = Err.Number
  said = Err.Description
  Err.Clear
  If outcome <> 0 Then outcome = outcome - vbObjectError
  Same what & ", temporary files", 0, FileCount(temporary)
  If outcome <> 0 Then Same what & ", files that were begun", filesBefore, FileCount(received)
End Sub

Function FileCount(directory)
  Dim folder
  Set folder = fso.GetFolder(directory)
  FileCount = CInt(folder.Files.Count + folder.SubFolders.Count)
End Function

Sub NewMessage
  mail.NewMessage
  mail.from = "joe@example.org"
  mail.AddRecipientTo "ann@example.org"
  mail.subject = "Hello"
  mail.Message = "A text."
End Sub

' A server that does everything right is spoken to by the same object.
Sub GoesOn(what)
  NewMessage
  mail.SMTPPort = goodSmtp
  On Error Resume Next
  mail.Send
  Called what & ", the next Send", FileCount(received)
  Same what & ", the next Send", "0", CStr(outcome)
End Sub

' Deletions of the conversation before that were lost with its connection are told here.
Sub Begin(smtpPort, popPort)
  On Error Resume Next
  mail.Logout
  On Error Goto 0
  If FileCount(received) > 0 Then fso.DeleteFile received & "\*"
  NewMessage
  mail.SMTPPort = smtpPort
  mail.POPPort = popPort
End Sub

' One item of all headers, or of all recipients.
Function Headers(item)
  Dim index
  For index = 0 To mail.messageCount - 1
    mail.messageIndex = index
    If index > 0 Then Headers = Headers & "|"
    Headers = Headers & mail.GetHeaderItemString(item)
  Next
  If mail.messageCount = 0 Then Headers = "" Else mail.messageIndex = 0
End Function

' "[file|name] content" of each attachment.
Function Labels()
  Dim index
  For index = 0 To mail.GetMessageItemCount(6) - 1
    Labels = Labels & "[" & mail.GetMessageItem(13, index) & "|"
    Labels = Labels & mail.GetMessageItem(14, index) & "]"
  Next
End Function

Function Attachments()
  Dim index, path, file
  Attachments = ""
  For index = 0 To mail.GetMessageItemCount(6) - 1
    path = mail.GetMessageItem(6, index)
    Attachments = Attachments & "[" & fso.GetFileName(path) & "|"
    Attachments = Attachments & mail.GetMessageItem(7, index) & "] "
    If fso.GetFile(path).Size > 0 Then
      Set file = fso.OpenTextFile(path)
      Attachments = Attachments & file.ReadAll
      file.Close
    End If
  Next
End Function

goodSmtp = WScript.Arguments(0)
goodPop = WScript.Arguments(1)
temporary = WScript.Arguments(2) & "\temporary"
received = WScript.Arguments(2) & "\received"
NewServer goodSmtp, goodPop
mail.XMailer = ""
mail.attachmentEncoding = 2
mail.TimeoutConnect = 5000
mail.TimeoutProtocol = 5000
mail.undocumented1 = "|TEMPDIR|" & temporary
mail.AttachmentDirectory = received
