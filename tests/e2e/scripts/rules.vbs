' Rules that involve more than one member, more than one object, or an error's text.
Dim other, i, text, people, count
Const UNIQUE = "shared text"

Set mail = CreateObject("QuillonInterface.Server")
Set other = CreateObject("QuillonInterface.Server")

' What is shared, what is not, and what a new object resets.
mail.subject = UNIQUE
Same "a subject set through one object", UNIQUE, other.subject
mail.loginName = "joe"
Same "a login name set through one object", "", other.loginName
mail.SMTPPort = 2525
Same "a port set through one object", CInt(2525), other.SMTPPort
Set other = Nothing
Set other = CreateObject("QuillonInterface.Server")
Same "the port after a creation", CInt(25), mail.SMTPPort
Same "the port of the new object", CInt(25), other.SMTPPort
Same "the subject after a creation", UNIQUE, mail.subject
Set other = Nothing
Same "the subject after a release", UNIQUE, mail.subject

' dateFormat: numbers, names, formats of one's own.
mail.dateFormat = 3
Same "dateFormat 3", CInt(3), mail.dateFormat
mail.dateFormat = "yyyy-mm-dd"
Same "a format of one's own", "yyyy-mm-dd", mail.dateFormat
On Error Resume Next
mail.dateFormat = 6
Raised "dateFormat 6", 529
On Error GoTo 0
Same "dateFormat after a refusal", "yyyy-mm-dd", mail.dateFormat
mail.dateFormat = "long date"
Same "a name in small letters", CInt(3), mail.dateFormat

' Recipients: delimiters, brackets, quotes, blanks.
mail.NewMessage
mail.AddRecipientTo " a@x ,, ""Doe, J"" <j@x>,<b,c@x> , "
mail.GetMessageItems 1, people, count
Same "how many recipients", CInt(3), count
Same "the array", "array of 3", Shown(people)
Same "a plain one", "a@x", people(0)
Same "a quoted one", """Doe, J"" <j@x>", people(1)
Same "one in brackets", "<b,c@x>", people(2)
mail.GetMessageItems 2, people, count
Same "no recipients", "array of 0", Shown(people)
Same "no recipients, counted", CInt(0), count
mail.recipientDelimiter = ";"
mail.AddRecipientCc "a@x;b@x,c@x"
Same "another delimiter", CLng(2), mail.GetMessageItemCount(2)

' Session handles.
On Error Resume Next
mail.mailSystem = 0
mail.SessionHandleEx = 1
RaisedText "a handle without a system", "Could not set session handle, MailSystem property must be set first."
mail.mailSystem = 10
mail.SessionHandleEx = 1
RaisedText "a handle for Internet mail", "Could not set session handle."

' Detection.
mail.mailSystem = 0
mail.SetNativeSystem
Raised "detection", 0
On Error GoTo 0
Same "the system found", CInt(5), mail.mailSystem
Same "a system that is not there", CInt(0), mail.QueryMailSystem(20)
Same "a system that is always there", CInt(-1), mail.QueryMailSystem(30)
Same "no system", CInt(0), mail.QueryMailSystem(99)

' Texts of errors.
On Error Resume Next
mail.AttachmentDirectory = "C:\none"
RaisedText "AttachmentDirectory", "Directory does not exist."
mail.AddAttachment "C:\none.txt"
RaisedText "AddAttachment", "Attachment does not exist."
mail.AddAlternative "C:\none.htm", "text/html", 0
RaisedText "AddAlternative", "Alternative C:\none.htm does not exist."
mail.AsynchObjectRegister mail, 1, 1, 0
RaisedText "AsynchObjectRegister", "Object type not supported."
mail.AsynchObjectRegister mail, 0, 2, 0
RaisedText "AsynchObjectRegister", "Configuration parameter not supported."
mail.SaveMessageToFile "C:\none\file"
RaisedText "a file that cannot be written", "Undetermined error in SaveMessageToFile method."
mail.mailSystem = 1
mail.LoadMessageHeaders
RaisedText "a mail program without login data", "Insufficient login information."
mail.mailSystem = 2
mail.LoadMessageHeaders
RaisedText "a library that is not there", "Error initializing VIM (VIMInitialize)"
mail.mailSystem = 6
mail.AddRecipientTo "a@x"
mail.Send
Raised "sending with POP3 alone", 530
mail.mailSystem = 7
mail.LoadMessageHeaders
Raised "receiving with SMTP alone", 530
On Error GoTo 0

Decode &H80040203, 0, "No mail system was detected."
Decode &H800407D5, 1, ""
Decode vbObjectError + 752, 0, "No mail system was detected."
Decode vbObjectError + 10999, 0, "Undetermined"
Decode 0, 0, "Undetermined"

Sub Decode(number, expectedSystem, expectedText)
  Dim system, decoded, api, message
  system = 77 : decoded = 88 : api = 99 : message = "?"
  mail.DecodeError number, system, decoded, api, message
  Same "system of " & Hex(number), CInt(expectedSystem), CInt(system)
  Same "first number of " & Hex(number), 88, decoded
  Same "second number of " & Hex(number), 99, api
  If expectedText <> "" Then
    Same "text of " & Hex(number), expectedText, message
  ElseIf message = "?" Or message = "Undetermined" Then
    WScript.Echo "no text of its own for " & Hex(number)
  End If
End Sub
