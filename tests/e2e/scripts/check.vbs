Option Explicit
Dim mail

' The text and the type of a value, so that 0, "0" and Empty differ.
Function Shown(value)
  If IsArray(value) Then
    Shown = "array of " & (UBound(value) + 1)
  Else
    Shown = TypeName(value) & " [" & value & "]"
  End If
End Function

Sub Same(what, expected, actual)
  If Shown(expected) <> Shown(actual) Then
    WScript.Echo what & ": " & Shown(actual) & " instead of " & Shown(expected)
  End If
End Sub

' To be called under On Error Resume Next, right after the statement: 0 stands for no error, a
' number of the server (500 and above) for vbObjectError + number.
Sub Raised(what, expected)
  Dim number, text
  number = Err.Number
  text = Err.Description
  If expected >= 500 Then number = number - vbObjectError
  If number <> expected Then
    WScript.Echo what & ": error " & number & " (" & text & ") instead of " & expected
  End If
  Err.Clear
End Sub

Sub RaisedText(what, expected)
  If Err.Description <> expected Then
    WScript.Echo what & ": [" & Err.Description & "] instead of [" & expected & "]"
  End If
  Err.Clear
End Sub
