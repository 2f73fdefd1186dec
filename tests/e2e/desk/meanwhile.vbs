' Comes while another script's call is in the mail program: is told to try again, and tries.
Dim busy, number, other, till
Set mail = CreateObject("QuillonInterface.Server")
mail.mailSystem = 1
mail.loginName = "ann"
mail.Password = "secret"
Set other = CreateObject("QuillonInterface.Server")
other.mailSystem = 7
On Error Resume Next
busy = 0
till = Timer + 20
Do
  number = 0
  mail.LoadMessageHeaders
  number = Err.Number
  Err.Clear
  If number = &H8001010A Then busy = busy + 1
  other.Login
  If Err.Number = &H8001010A And number <> &H8001010A Then WScript.Echo "only the other one was refused"
  Err.Clear
Loop While number = &H8001010A And Timer < till
Same "in the end", CLng(0), CLng(number)
Same "found it busy", True, busy > 0
Set other = Nothing
