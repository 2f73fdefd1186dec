"""Saves the attachments of all messages of a mailbox in a directory. Nothing is deleted."""

from quillon import ItemAttachmentNames, ItemAttachments, pop, run


def main(host, name, password, directory, port=None):
    mail = pop(host, name, password, port)
    mail.AttachmentDirectory = directory  # the files are written there as messages are loaded
    mail.LoadMessageHeaders()
    for index in range(mail.messageCount):
        mail.messageIndex = index
        mail.LoadMessage()
        # Collections are simpler here than arrays by reference: see the README.
        names = mail.MessageItems(ItemAttachmentNames)
        for attached, file in zip(names, mail.MessageItems(ItemAttachments)):
            print(f"{attached}: {file}")
    mail.Logout()


if __name__ == "__main__":
    run(main, "SERVER NAME PASSWORD DIRECTORY [PORT]")
