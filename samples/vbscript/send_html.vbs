' Sends a page with a picture in it.
'
'   cscript //nologo send_html.vbs SERVER FROM TO PICTURE [PORT]
Option Explicit
Const MailSystemInternet = 10

Dim arguments, mail
Set arguments = WScript.Arguments
If arguments.Count < 4 Then
  WScript.Echo "usage: send_html.vbs SERVER FROM TO PICTURE [PORT]"
  WScript.Quit 2
End If

On Error Resume Next
Set mail = CreateObject("QuillonInterface.Server")
Check "Quillon is not there"
mail.mailSystem = MailSystemInternet
mail.SMTPServer = arguments(0)
If arguments.Count > 4 Then mail.SMTPPort = arguments(4)
mail.Charset = "auto"                      ' the page may hold any character
mail.NewMessage
mail.from = arguments(1)
mail.AddRecipientTo arguments(2)
mail.subject = "Prices in EUR"
' Readers without HTML get this text; left empty, it is made from the page.
mail.Message = "Our new prices are in the picture."
mail.HTMLMessage = "<h1>Prices in &euro;</h1><p><img src=""cid:prices"" alt=""The list""></p>"
mail.AddInlineFile arguments(3), "prices"  ' what the page calls cid:prices
Check "The message cannot be written"
mail.Send
Check "Not sent"
WScript.Echo "Sent."
Set mail = Nothing

Sub Check(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo what & ": " & Err.Description & " (" & Err.Number - vbObjectError & ")"
  Set mail = Nothing
  WScript.Quit 1
End Sub
