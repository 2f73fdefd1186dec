// Line breaks in everything that stands in the header of the message but is no address.
newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.AddRecipientTo("bob@example.com");
mail.subject = "One\r\n\r\n\0\nX-Evil: 1";
mail.replyTo = "office@example.com\r\nX-Evil: 2";
mail.AddXHeader("Note", "three\rX-Evil: 3");
mail.XMailer = "four\n\nX-Evil: 4";
mail.Message = "text";
mail.Send();
