NewServer WScript.Arguments(0), WScript.Arguments(1)
mail.InternetLogging = True
mail.LoadMessageHeaders
mail.Logout
' Begins a new one.
mail.InternetLogging = True
mail.AddRecipientTo "bob@example.com"
mail.subject = "Logged"
mail.Send
mail.LoadMessageHeaders
mail.InternetLogging = False
mail.subject = "Unseen"
mail.Send
