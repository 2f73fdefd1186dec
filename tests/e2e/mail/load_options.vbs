' One message of text, two other renderings and a file, read with each of the options.
Dim files, count, root
root = WScript.Arguments(1)

' Loads it into a fresh directory and compares; `names` are the shown names, joined.
Sub Loads(what, directory, body, names)
  mail.AttachmentDirectory = root & "\" & directory
  mail.LoadMessage
  Same what & ", text", body, mail.Message
  Same what & ", names", names, mail.GetMessageItemString(7)
End Sub

NewServer WScript.Arguments(0), WScript.Arguments(0)
mail.LoadMessageHeaders
mail.messageIndex = 0
Loads "all", "all", "Good morning", "ALTERNAT.RTZ, ALTERNAT.HTM, data.long.name"
mail.GetMessageItems 6, files, count
Same "count", 3, CInt(count)
Same "RTZ", root & "\all\ALTERNAT.RTZ", files(0)
Same "HTM", root & "\all\ALTERNAT.HTM", files(1)
Same "cleaned", root & "\all\data.longname", files(2)
Same "a field", "Tuesday's report", mail.GetHeaderValueByName("x-about")
Same "no such field", "", mail.GetHeaderValueByName("x-none")
Same "subject", "Report", mail.subject
Same "To", "Bob <bob@example.com>, jane@example.com", mail.GetMessageItemString(1)

mail.LoadMessage
mail.GetMessageItems 6, files, count
Same "name is taken", root & "\all\dat1.longname", files(2)
Same "shown name", "data.long.name", mail.GetMessageItem(7, 2)

mail.suppressAlternatives = True
Loads "suppressAlternatives", "plain", "Good morning", "data.long.name"
mail.suppressAttachments = True
Loads "both suppressed", "bare", "Good morning", ""
mail.suppressAlternatives = False
Loads "suppressAttachments", "bare", "Good morning", ""
mail.suppressAttachments = False

mail.AttachmentDirectory = root & "\all"
mail.HeadersInMessage = True
mail.LoadMessage
Same "header in text", "From: Ann <ann@example.com>" & vbCrLf, Left(mail.Message, 29)
Same "empty line before text", vbCrLf & vbCrLf & "Good morning", Right(mail.Message, 16)
mail.HeadersInMessage = False

mail.ReturnShortFilespecs = True
mail.AttachmentDirectory = "C:\short attachments"
mail.LoadMessage
If InStr(mail.GetMessageItem(6, 0), " ") > 0 Then WScript.Echo "not short: " & mail.GetMessageItem(6, 0)
mail.ReturnShortFilespecs = False
mail.LoadMessage
Same "long", "C:\short attachments\", Left(mail.GetMessageItem(6, 0), 21)

' Without a directory the files go where Windows keeps temporary ones.
mail.AttachmentDirectory = ""
mail.LoadMessage
If InStr(1, mail.GetMessageItem(6, 0), "\temp\", 1) = 0 Then WScript.Echo "not there: " & mail.GetMessageItem(6, 0)

' A directory that goes away: the error leaves the loaded message as it was.
mail.AttachmentDirectory = root & "\gone"
mail.undocumented1 = "|DELETE_DIRECTORY|" & root & "\gone"
mail.subject = "before"
On Error Resume Next
mail.LoadMessage
Ended "no directory", 6026, "Error occurred trying to open the POP temporary file."
On Error GoTo 0
Same "subject stays", "before", mail.subject

' A long text goes into a file of its own.
mail.messageIndex = 1
Loads "long text", "long", "{Message too long, appended as first attachment.}", "MESSAGE.TXT, page.gif"
' A form.
mail.messageIndex = 2
mail.LoadMessage
Same "form", "John Smith", mail.GetWebFormValue(" Name ")
Same "form, plus", "a b", mail.GetWebFormValue("sum")
Same "form, none", "", mail.GetWebFormValue("zip")
