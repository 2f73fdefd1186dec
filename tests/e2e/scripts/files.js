// Texts through files: what was written is what is read, and plain files are what they look like.
mail = new ActiveXObject("QuillonInterface.Server");
var files = new ActiveXObject("Scripting.FileSystemObject");

var texts = ["", "plain", "caf\u00e9 \u20ac", "\u0416 \u4f60 \ud83d\ude00", "a\u0000b", "\r\n\n\r",
             "\ufeffmark", "\u00ff\u00fe", "\u00ef\u00bb\u00bf"];
for (var i = 0; i < texts.length; ++i) {
  mail.Message = texts[i];
  mail.SaveMessageToFile("C:\\text");
  mail.Message = "nothing";
  mail.LoadMessageFromFile("C:\\text");
  same("text " + i, texts[i], mail.Message);
}

// ANSI where that holds the text, one byte a character.
mail.Message = "caf\u00e9";
mail.SaveMessageToFile("C:\\text");
same("size of an ANSI file", 4, files.GetFile("C:\\text").Size);

var file = files.CreateTextFile("C:\\wide", true, true);  // UTF-16 with a byte-order mark
file.Write("\u4f60");
file.Close();
mail.LoadMessageFromFile("C:\\wide");
same("a UTF-16 file", "\u4f60", mail.Message);

same("a directory is no file", 548, codeOf(function () { mail.LoadMessageFromFile("C:\\"); }));
same("text after a refusal", "\u4f60", mail.Message);
file = null;
files = null;
