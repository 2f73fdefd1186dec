// Aborts whatever is running.
mail = new ActiveXObject("QuillonInterface.Server");
while (new Date().getTime() < end) attempt("AsynchAbort", function () { mail.AsynchAbort(); });
report();
