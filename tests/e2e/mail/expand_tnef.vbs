' Messages with a winmail.dat, as they come and opened.
Dim root
root = WScript.Arguments(1)

Sub Loads(what, index, body, names)
  mail.messageIndex = index
  mail.LoadMessage
  Same what & ", text", body, mail.Message
  Same what & ", names", names, mail.GetMessageItemString(7)
End Sub

NewServer WScript.Arguments(0), WScript.Arguments(0)
mail.AttachmentDirectory = root & "\closed"
mail.LoadMessageHeaders
Loads "closed", 0, "", "winmail.dat"

mail.ExpandTnef = True
mail.AttachmentDirectory = root & "\opened"
Loads "opened", 0, "Gr" & Chr(252) & Chr(223) & "e", _
    "ALTERNAT.HTM, ALTERNAT.RTF, logo" & Chr(228) & ".gif, Fwd.DAT, Fwd.TXT, inner.txt"
mail.suppressAlternatives = True
mail.AttachmentDirectory = root & "\appointment"
Loads "appointment", 1, "See you at noon", "Winmail.dat, agenda.txt"
