// A Server object for a mail host of the test, and a message of its own: another object of the
// script may have written one.
function newServer(smtpPort, popPort) {
  mail = new ActiveXObject("QuillonInterface.Server");
  mail.mailSystem = 10;
  mail.LoginDialog = 0;
  mail.SMTPServer = mail.postOffice = "127.0.0.1";
  mail.SMTPPort = smtpPort;
  mail.POPPort = popPort;
  mail.loginName = "joe";
  mail.Password = "secret";
  mail.NewMessage();
  mail.from = "Ann Example <ann@example.com>";
  mail.replyTo = "";
}
