' The library raises a fault in the list of messages; the server serves on.
NewServer 1
mail.Login
On Error Resume Next
mail.LoadMessageHeaders
Raised "a fault", 2002
mail.LoadMessageHeaders
RaisedText "a fault", "Undetermined"
Same "a name", "Bob Baker", mail.ResolveName("bob")
mail.Logout
Raised "logout", 0
