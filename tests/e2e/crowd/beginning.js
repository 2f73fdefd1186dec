// Begins one operation after the other, which the other script's aborts may meet at any moment.
mail = new ActiveXObject("QuillonInterface.Server");
var listener = {AsynchNotification: function (operation, kind, done, total, message, result, reserved, text) { return 0; }};
while (new Date().getTime() < end) {
  attempt("prepare", prepare);
  attempt("AsynchObjectRegister", function () { mail.AsynchObjectRegister(listener, 0, pick(2), 0); });
  for (var i = 0; i < 20; ++i) attempt("LoadMessageHeaders", function () { mail.LoadMessageHeaders(); });
}
report();
listener = null;
