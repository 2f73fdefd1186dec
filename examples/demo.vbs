' Sends a message with two recipients and an attachment (this script) over SMTP, fetches it back over
' POP3, compares and deletes it.
'
'   cscript //nologo demo.vbs SMTP-PORT POP-PORT
'
' Both ports are on this machine; ./dev demo starts a mail host there. The last line is "demo: ok" and
' the exit status 0 when what came back is what was sent.
Option Explicit

Const HOST = "127.0.0.1"
Const INTERNET_MAIL = 10
Const ITEM_TO = 1
Const ITEM_SUBJECT = 4
Const ITEM_FILE = 6
Const ITEM_FILE_NAME = 7
Const ITEM_FROM = 9
Const ITEM_DATE = 10

Dim mail, subject, text, sender, attached, received, i, found

If WScript.Arguments.Count <> 2 Then Fail "call it with two ports: SMTP and POP3"

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
If Err.Number <> 0 Then Fail "the mail server is not registered (" & Err.Number & " " & Err.Description & ")"

mail.mailSystem = INTERNET_MAIL
mail.SMTPServer = HOST
mail.SMTPPort = WScript.Arguments(0)
mail.postOffice = HOST
mail.POPPort = WScript.Arguments(1)
mail.loginName = "demo"
mail.Password = "demo"
Check "setting up"

' ---- send
subject = "Greetings from a script, " & Now
sender = "Demo <demo@example.com>"
attached = WScript.ScriptFullName
text = "Hello Ann and Bob," & vbCrLf & vbCrLf & _
       "this message went out over SMTP and came back over POP3." & vbCrLf & _
       ".. and this line begins with two dots."

mail.NewMessage
mail.from = sender
mail.AddRecipientTo "Ann <ann@example.com>"
mail.AddRecipientTo "bob@example.com"
mail.subject = subject
mail.Message = text
mail.AddAttachment attached
mail.Send
Check "sending"
WScript.Echo "sent:     " & subject

' ---- find it in the mailbox
mail.LoadMessageHeaders
Check "loading the headers"
WScript.Echo "mailbox:  " & mail.messageCount & " message(s)"
found = -1
For i = 0 To mail.messageCount - 1
  mail.messageIndex = i
  If mail.GetHeaderItemString(ITEM_SUBJECT) = subject Then found = i
Next
Check "reading the headers"
If found < 0 Then Fail "the message is not in the mailbox"

' ---- read it
mail.messageIndex = found
mail.LoadMessage
Check "loading the message"
WScript.Echo "from:     " & mail.from
WScript.Echo "to:       " & mail.GetMessageItemString(ITEM_TO)
WScript.Echo "subject:  " & mail.subject
WScript.Echo "date:     " & mail.GetHeaderItemString(ITEM_DATE)
received = mail.GetMessageItem(ITEM_FILE, 0)
WScript.Echo "attached: " & mail.GetMessageItem(ITEM_FILE_NAME, 0) & ", now in " & received
WScript.Echo "text:"
WScript.Echo mail.Message
Check "reading the message"

Compare "originator", sender, mail.GetMessageItemString(ITEM_FROM)
Compare "recipients", "Ann <ann@example.com>, bob@example.com", mail.GetMessageItemString(ITEM_TO)
Compare "number of recipients", 2, mail.GetMessageItemCount(ITEM_TO)
Compare "subject", subject, mail.subject
Compare "text", text, mail.Message
Compare "number of attachments", 1, mail.GetMessageItemCount(ITEM_FILE)
Compare "attachment", Content(attached), Content(received)
mail.undocumented1 = "|DELETE_FILE|" & received
Check "deleting the received attachment"

' ---- delete it
mail.DeleteMessage
Check "deleting"
mail.Logout
Check "logging out"
mail.LoadMessageHeaders
Check "loading the headers again"
For i = 0 To mail.messageCount - 1
  mail.messageIndex = i
  If mail.GetHeaderItemString(ITEM_SUBJECT) = subject Then Fail "the message is still there"
Next
mail.Logout
Check "logging out"
WScript.Echo "deleted"

Set mail = Nothing                         ' lets the server end
WScript.Echo "demo: ok"
WScript.Quit 0

Sub Check(doing)
  If Err.Number <> 0 Then Fail doing & ": error " & (Err.Number - vbObjectError) & ", " & Err.Description
End Sub

Sub Compare(what, sent, received)
  If received <> sent Then Fail what & ": sent [" & sent & "], received [" & received & "]"
End Sub

Function Content(file)
  Content = CreateObject("Scripting.FileSystemObject").OpenTextFile(file).ReadAll
  Check "reading " & file
End Function

Sub Fail(reason)
  Set mail = Nothing
  WScript.Echo "demo: failed: " & reason
  WScript.Quit 1
End Sub
