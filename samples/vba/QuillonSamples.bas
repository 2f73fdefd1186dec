Attribute VB_Name = "QuillonSamples"
' For Office and Visual Basic 6: add "Quillon 1.0 Type Library" to the references (Tools, References),
' and the editor completes members and constants. SendReport is the one to begin with.
Option Explicit

Private Const SmtpHost As String = "mail.example.com"
Private Const PopHost As String = "mail.example.com"
Private Const LoginName As String = "joe"
Private Const Password As String = "secret"
Private Const Sender As String = "Joe Smith <joe@example.com>"

Public Sub SendReport()
    Dim mail As Quillon.Server
    On Error GoTo Failed
    Set mail = NewMail()
    mail.NewMessage
    mail.from = Sender
    mail.AddRecipientTo "ann@example.com"
    mail.subject = "Report of March"
    mail.Message = "Dear Ann," & vbCrLf & vbCrLf & "the report is done."
    mail.AddAttachment "C:\Mail\report.pdf"
    mail.Send
    Exit Sub
Failed:
    Tell "The report was not sent"
End Sub

Public Sub SendPage()
    Dim mail As Quillon.Server
    On Error GoTo Failed
    Set mail = NewMail()
    mail.Charset = "auto"
    mail.NewMessage
    mail.from = Sender
    mail.AddRecipientTo "ann@example.com"
    mail.subject = "Prices in " & ChrW(8364)
    mail.Message = "Our new prices are in the picture."
    mail.HTMLMessage = "<h1>Prices</h1><p><img src=""cid:prices"" alt=""The list""></p>"
    mail.AddInlineFile "C:\Mail\prices.png", "prices"
    mail.Send
    Exit Sub
Failed:
    Tell "The page was not sent"
End Sub

Public Sub SaveAttachments()
    Dim mail As Quillon.Server
    Dim files() As String, count As Integer, i As Long, n As Long
    On Error GoTo Failed
    Set mail = NewMail()
    mail.AttachmentDirectory = "C:\Mail\Attachments"
    mail.LoadMessageHeaders
    For i = 0 To mail.messageCount - 1
        mail.messageIndex = i
        mail.LoadMessage
        mail.GetMessageItems ItemAttachments, files, count
        For n = 0 To count - 1
            Debug.Print files(n)
        Next
    Next
    mail.Logout
    Exit Sub
Failed:
    Tell "The mailbox was not read"
End Sub

' An order is written to a file, and deleted from the mailbox behind that. Whatever fails in between,
' none is lost: at worst it is worked off once more, under the same name.
Public Sub WorkOffOrders()
    Dim mail As Quillon.Server
    Dim identifiers() As String, i As Long, n As Long
    On Error GoTo Failed
    Set mail = NewMail()
    mail.LoadMessageIdentifiers
    n = mail.messageCount
    If n = 0 Then Exit Sub
    ReDim identifiers(n - 1)
    For i = 0 To n - 1
        mail.messageIndex = i
        identifiers(i) = mail.GetHeaderItemString(HeaderUniqueIdentifier)
    Next
    mail.LoadMessageHeaders
    For i = 0 To n - 1
        mail.messageIndex = i
        If Left$(mail.GetHeaderItemString(HeaderSubject), 5) = "Order" Then
            mail.LoadMessage
            mail.SaveMessageToFile "C:\Mail\Orders\" & FileName(identifiers(i)) & ".txt"
            mail.DeleteMessage
        End If
    Next
    mail.Logout                             ' only this deletes for good
    Exit Sub
Failed:
    Tell "Not all orders were worked off"
End Sub

Public Sub ListAddressBook()
    Dim mail As New Quillon.Server, book As New Quillon.AddressBook
    On Error GoTo Failed
    mail.mailSystem = MailSystemActiveMessaging
    Set book.MailObject = mail
    book.OpenAddressBook
    Do Until book.EOF
        Debug.Print book.Name; " <"; book.Address; ">"; IIf(book.EntryType = EntryGroup, " (a group)", "")
        book.MoveNext
    Loop
    book.CloseAddressBook
    Exit Sub
Failed:
    Tell "The address book was not listed"
End Sub

' Needs the class module QuillonListener.cls. Give it up with AbortSending, as from a button.
Public Sub SendInTheBackground()
    Dim mail As Quillon.Server
    On Error GoTo Failed
    Set mail = NewMail()
    Set QuillonListener.Sending = mail      ' keeps both alive until the end
    mail.NewMessage
    mail.from = Sender
    mail.AddRecipientTo "ann@example.com"
    mail.AddAttachment "C:\Mail\large.zip"
    mail.AsynchObjectRegister QuillonListener, 0, NotifyAll, 0
    mail.Send                               ' returns at once
    Exit Sub
Failed:
    Tell "The file was not sent"
End Sub

Public Sub AbortSending()
    If Not QuillonListener.Sending Is Nothing Then QuillonListener.Sending.AsynchAbort
End Sub

Private Function NewMail() As Quillon.Server
    Set NewMail = New Quillon.Server
    NewMail.mailSystem = MailSystemInternet
    NewMail.SMTPServer = SmtpHost
    NewMail.postOffice = PopHost
    NewMail.loginName = LoginName
    NewMail.Password = Password
End Function

Private Function FileName(ByVal identifier As String) As String
    Dim i As Long                           ' the server chose it, so it may hold anything
    For i = 1 To Len(identifier)
        FileName = FileName & Right$("0" & Hex$(Asc(Mid$(identifier, i, 1))), 2)
    Next
End Function

Private Sub Tell(ByVal what As String)
    MsgBox what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")", vbExclamation
End Sub
