// An object that hears of operations, and what it has heard.
//
// The server calls back while the script waits in a call.
var PATIENCE = 100;
var heard = {log: "", ended: null, partly: null};
var sleeper = new ActiveXObject("QuillonTest.Sleeper");

function Listener() {
  this.AsynchNotification = function (operation, kind, done, total, message, result, reserved, text) {
    heard.log += kind + "/" + operation + " " + result + " " + text + "/" + done + " of " + total + "\n";
    if (kind == 2) heard.ended = 1;
    if (kind == 3 && done < total) heard.partly = 1;
    return 0;
  };
}

function begin() {
  heard.log = "";
  heard.ended = heard.partly = null;
}

// What was said by events of a kind: operation, result and text of each.
function said(kind) {
  var lines = heard.log.split("\n"), all = [], j;
  for (j = 0; j < lines.length; ++j) {
    if (lines[j].split("/")[0] == kind) all.push(lines[j].split("/")[1]);
  }
  return all.join("|");
}

function steps() {
  return said(1).replace(/\d -1 /g, "");
}

function counts() {
  var lines = heard.log.split("\n");
  return lines[lines.length - 2].split("/")[2];
}

// Waits until the operation has ended; the server calls back meanwhile.
function untilEnded() {
  for (var i = 0; i < PATIENCE && !heard.ended; ++i) sleeper.Sleep(100);
}

// Code and text of the error that an action raises.
function failure(action) {
  try {
    action();
  } catch (e) {
    return (e.number & 0xFFFF) + " " + e.message;
  }
  return "none";
}

var IN_PROGRESS = "540 You cannot execute an asynchronous method while another is in progress.";
var IN_CALLBACK = "541 You cannot execute an asynchronous method until after the " +
                  "AsynchNotification method exits back to Quillon.";
var NOT_REGISTERED = "538 No asynchronous notification object has been registered.";
