newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.AddRecipientTo("bob@example.com");
mail.AddAttachment("C:\\Files\\\u65e5\u672c \u00fc.txt");
mail.Send();
