"""Works off the orders in a mailbox: each message whose subject begins with "Order" is written to a
file, and deleted from the mailbox behind that. Whatever fails in between, no order is lost: at worst
it is worked off once more, under the same name."""

import os

from quillon import HeaderSubject, HeaderUniqueIdentifier, pop, run


def identifiers(mail):
    """They name a message for ever, its number only until the next login."""
    mail.LoadMessageIdentifiers()
    found = []
    for index in range(mail.messageCount):
        mail.messageIndex = index
        found.append(mail.GetHeaderItemString(HeaderUniqueIdentifier))
    return found


def main(host, name, password, directory, port=None):
    mail = pop(host, name, password, port)
    orders = identifiers(mail)
    mail.LoadMessageHeaders()
    done = 0
    for index, identifier in enumerate(orders):
        mail.messageIndex = index
        if not mail.GetHeaderItemString(HeaderSubject).startswith("Order"):
            continue
        mail.LoadMessage()
        # The server chose the identifier, so it may hold anything.
        mail.SaveMessageToFile(os.path.join(directory, identifier.encode().hex() + ".txt"))
        mail.DeleteMessage()  # the order is safe now
        done += 1
    mail.Logout()  # only this deletes for good: the server does it at the end
    print(f"{done} order(s)")


if __name__ == "__main__":
    run(main, "SERVER NAME PASSWORD DIRECTORY [PORT]")
