// Sends each of `texts` [subject, body, subject read back, body read back] and reads all of them.
newServer(WScript.Arguments(0), WScript.Arguments(1));
for (var i = 0; i < texts.length; i++) {
  mail.NewMessage();
  mail.AddRecipientTo("bob@example.com");
  mail.subject = texts[i][0];
  mail.Message = texts[i][1];
  same("put " + i, texts[i][1], mail.Message);
  mail.Send();
}
mail.LoadMessageHeaders();
same("count", texts.length, mail.messageCount);
for (i = 0; i < texts.length; i++) {
  mail.messageIndex = i;
  same("header subject " + i, texts[i][2], mail.GetHeaderItemString(4));
  mail.LoadMessage();
  same("subject " + i, texts[i][2], mail.subject);
  same("body " + i, texts[i][3], mail.Message);
}
