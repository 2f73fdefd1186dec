// Begins a message that tells how it fares, and hears of it until the program is killed.
newServer(WScript.Arguments(0), WScript.Arguments(1));
mail.AsynchObjectRegister(new Listener(), 0, 1, 0);
mail.AddRecipientTo("bob@example.com");
mail.subject = "Abandoned";
mail.Send();
while (true) sleeper.Sleep(100);
