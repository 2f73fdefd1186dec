"""What the other samples have in common: the objects, their constants and their errors.

Needs pywin32 (pip install pywin32), of 32 or 64 bit.
"""

import sys

import pywintypes
import win32com.client

MailSystemInternet = 10
ItemAttachments = 6
ItemAttachmentNames = 7
HeaderSubject = 4
HeaderUniqueIdentifier = 22
EntryGroup = 1
EventStatus = 1
EventEnd = 2
EventProgress = 3
OperationSend = 1
NotifyAll = 1


def server():
    return win32com.client.Dispatch("QuillonInterface.Server")


def smtp(host, port):
    """A Server that sends through the host."""
    mail = server()
    mail.mailSystem = MailSystemInternet
    mail.SMTPServer = host
    if port:
        mail.SMTPPort = int(port)
    mail.NewMessage()  # another program may have left one
    return mail


def pop(host, name, password, port):
    """A Server that reads the mailbox."""
    mail = server()
    mail.mailSystem = MailSystemInternet
    mail.postOffice = host
    mail.loginName = name
    mail.Password = password
    if port:
        mail.POPPort = int(port)
    return mail


def set_from(mail, sender):
    """`mail.from = sender`, which Python cannot say: from is one of its words."""
    setattr(mail, "from", sender)


def run(main, usage):
    """Calls main with the arguments of the command line; an error of Quillon becomes a line."""
    least = len(usage.partition("[")[0].split())
    if len(sys.argv) <= least:
        sys.exit(f"usage: {sys.argv[0]} {usage}")
    try:
        main(*sys.argv[1:])
    except pywintypes.com_error as error:
        number, text, details, _ = error.args
        if details:
            text, number = details[2], details[5]
        sys.exit(f"Error: {text} ({number & 0xFFFF})")
