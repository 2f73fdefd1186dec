// Changes what all objects share, aborts, and makes objects and lets them go.
mail = new ActiveXObject("QuillonInterface.Server");
var systems = [0, 1, 6, 7, 9, 10], i;
while (new Date().getTime() < end) {
  // Aborts follow on each other, so that some come while an operation begins.
  for (i = pick(20); i > 0; --i) attempt("AsynchAbort", function () { mail.AsynchAbort(); });
  for (i = pick(20); i > 0; --i) attempt("subject", function () { mail.subject; });
  switch (pick(8)) {
    case 0:
    case 1:
      attempt("mailSystem", function () { mail.mailSystem = systems[pick(systems.length)]; });
      break;
    case 2:
      attempt("NewMessage", function () { mail.NewMessage(); });
      break;
    case 3:
      attempt("messageCount", function () { mail.messageCount; });
      break;
    case 4:  // takes every registration back
      attempt("another object", function () {
        var another = new ActiveXObject("QuillonInterface.Server");
        if (pick(2) == 0) mail = another;
      });
  }
}
report();
