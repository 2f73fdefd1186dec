"""Sends a file while the program goes on, tells how far it is, and gives up after some seconds."""

import time

import pythoncom
from win32com.server.util import wrap

from quillon import (EventEnd, EventProgress, EventStatus, NotifyAll, OperationSend, run, set_from,
                     smtp)


class Listener:
    """Called while messages are pumped. Short: the sending waits for it."""

    _public_methods_ = ["AsynchNotification"]
    result = None  # -1: sent
    why = ""

    def AsynchNotification(self, operation, kind, done, total, message, result, reserved, text):
        if kind == EventStatus:
            print(text)
        elif kind == EventProgress and total > 0:
            print(f"{done} of {total} bytes")
        elif kind == EventEnd and operation == OperationSend:
            self.result, self.why = result, text
        return 0


def main(host, sender, to, file, seconds, port=None):
    mail = smtp(host, port)
    set_from(mail, sender)
    mail.AddRecipientTo(to)
    mail.AddAttachment(file)
    listener = Listener()
    mail.AsynchObjectRegister(wrap(listener), 0, NotifyAll, 0)
    mail.Send()  # returns at once
    until = time.monotonic() + float(seconds)
    aborted = False
    while listener.result is None:
        pythoncom.PumpWaitingMessages()
        time.sleep(0.05)
        if time.monotonic() > until and not aborted:
            aborted = True
            mail.AsynchAbort()
    if listener.result == -1:
        print("Sent.")
    else:
        print(f"Not sent: {listener.why} ({listener.result})")


if __name__ == "__main__":
    run(main, "SERVER FROM TO FILE SECONDS [PORT]")
