' A call in the mail program that takes its time, as if it showed a window.
NewServer 1
Same "name", "Bob Baker", mail.ResolveName("bob")
mail.LoadMessageHeaders
Same "an empty inbox", CLng(0), mail.messageCount
