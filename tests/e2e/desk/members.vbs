' Which members work with a mail system: each is called where it can do its work, and the script
' writes how that went. Arguments besides: a folder that is there, one to be made, one to post in.
Const kNoHandle = "SessionHandleExCould not set session handle."
Dim handle, object, count, text
handle = 0

' To be called right after the member: "yes" when it worked, "-" when the mail system does not have
' it, else the error.
Sub Told(member)
  Dim number, words
  number = Err.Number
  words = Err.Description
  Err.Clear
  If number = 0 Then
    WScript.Echo member & "=yes"
  ElseIf number - vbObjectError = 530 Or member & words = kNoHandle Then
    WScript.Echo member & "=-"
  Else
    WScript.Echo member & "=" & number & " " & words
  End If
End Sub

On Error Resume Next
mail.LoginDialog = False
mail.Login
Told "Login"
NewLetter "first"
mail.Send
Told "Send"
NewLetter "second"
mail.Send
NewLetter "third"
mail.Send
mail.Logout
Told "Logout"
Await 3
Err.Clear
mail.LoadMessageIdentifiers
Told "LoadMessageIdentifiers"
mail.LoadMessageHeaders
Told "LoadMessageHeaders"
count = mail.UnreadCount
Told "UnreadCount"
mail.messageIndex = 0
mail.LoadMessage
Told "LoadMessage"
text = mail.ResolveName("bob")
Told "ResolveName"
text = mail.ResolveNameEx("bob")
Told "ResolveNameEx"
mail.FolderDelimiter = "/"
count = mail.FolderExists(WScript.Arguments(4))
Told "FolderExists"
mail.GetFolderListString "", False, ";", False, text, count
Told "GetFolderList"
mail.CreateFolder WScript.Arguments(5)
Told "CreateFolder"
mail.CopyFolder WScript.Arguments(5), WScript.Arguments(4), False
Told "CopyFolder"
mail.messageIndex = 1
mail.CopyMessage WScript.Arguments(4)
Told "CopyMessage"
mail.MoveMessage WScript.Arguments(4)
Told "MoveMessage"
mail.LoadMessageHeaders
mail.messageIndex = 0
mail.DeleteMessage
Told "DeleteMessage"
mail.DeleteFolder WScript.Arguments(4)
Told "DeleteFolder"
NewLetter "posted"
mail.Folder = WScript.Arguments(6)
mail.Post
Told "Post"
mail.Folder = ""
Set object = mail.SessionObject
If Err.Number = 0 And object Is Nothing Then Err.Raise vbObjectError + 530
Told "SessionObject"
Set object = Nothing
handle = mail.sessionHandle
Err.Clear
mail.SessionHandleEx = handle
Told "SessionHandleEx"
mail.Logout
