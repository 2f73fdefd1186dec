NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.undocumented1 = "|TEMPDIR|C:\Temporary"
mail.AddRecipientTo "bob@example.com"
mail.AddAttachment "C:\Files\size1.bin"
mail.AddAttachment "C:\Files\gone.txt"
mail.undocumented1 = "|DELETE_FILE|C:\Files\gone.txt"
On Error Resume Next
mail.Send
Ended "a missing attachment", 521, "Attachment C:\Files\gone.txt does not exist."
mail.undocumented1 = "|KEEP_TEMP|2"
Ended "no flag", 529, "*"
On Error GoTo 0

mail.undocumented1 = "|BLOCK_SIZE|100"
mail.undocumented1 = "|KEEP_TEMP|-1"
mail.NewMessage
mail.AddRecipientTo "bob@example.com"
mail.Message = String(1000, "x")
mail.AddAttachment "C:\Files\size14.bin"
mail.Send
mail.undocumented1 = "|KEEP_TEMP|0"
mail.undocumented1 = "|BLOCK_SIZE|0"
mail.undocumented1 = "|TEMPDIR|"
