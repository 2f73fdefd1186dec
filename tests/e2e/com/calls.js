// What JScript does its own way.
mail = new ActiveXObject("QuillonInterface.Server");
same("no such member", 438, codeOf(function () { mail.noSuchMember(); }));
same("a number that is no flag", 529, codeOf(function () { mail.ErrorDisplay = 1; }));
mail.Certify = true;
same("a flag", -1, mail.Certify);
same("a method as a function", "", mail.GetMessageItemString(1));

var text = "\u20ac \u4f60 \ud83d\ude00 half \ud800 and \u0000 nul";
mail.Message = text;
same("any text", text, mail.Message);

mail.AddRecipientTo("a@x,b@x");
var all = "";
for (var e = new Enumerator(mail.MessageItems(1)); !e.atEnd(); e.moveNext()) all += e.item() + ";";
same("an enumerator", "a@x;b@x;", all);
