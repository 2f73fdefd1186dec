// When the others have left and what they began has ended, everything works.
mail = new ActiveXObject("QuillonInterface.Server");
attempt("prepare", prepare);
var patience = new Date().getTime() + 30000, code;
do {
  code = attempt("Logout", function () { mail.Logout(); });
} while (code === 540 && new Date().getTime() < patience);
attempt("prepare", prepare);
mail.NewMessage();
mail.AddRecipientTo("bob@example.com");
mail.from = "ann@example.com";
mail.subject = "afterwards";
code = attempt("Send", function () { mail.Send(); });
if (code !== 0) WScript.Echo("Send " + code);
code = attempt("LoadMessageHeaders", function () { mail.LoadMessageHeaders(); });
if (code !== 0) WScript.Echo("LoadMessageHeaders " + code);
