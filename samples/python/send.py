"""Sends a message with a file."""

from quillon import run, set_from, smtp


def main(host, sender, to, subject, text, file, port=None):
    mail = smtp(host, port)
    set_from(mail, sender)
    mail.AddRecipientTo(to)  # several are separated by commas
    mail.subject = subject
    mail.Message = text
    mail.AddAttachment(file)  # the whole path
    mail.Send()
    print("Sent.")


if __name__ == "__main__":
    run(main, "SERVER FROM TO SUBJECT TEXT FILE [PORT]")
