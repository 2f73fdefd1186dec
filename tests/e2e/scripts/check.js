var mail = null;

function same(what, expected, actual) {
  if (typeof expected !== typeof actual || expected !== actual) {
    WScript.Echo(what + ": " + escape(actual) + " (" + typeof actual + ") instead of " +
                 escape(expected));
  }
}

// The server's code of the error that an action raises, 0 when it raises none.
function codeOf(action) {
  try {
    action();
  } catch (e) {
    return e.number & 0xFFFF;
  }
  return 0;
}
