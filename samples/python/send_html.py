"""Sends a page with a picture in it."""

from quillon import run, set_from, smtp


def main(host, sender, to, picture, port=None):
    mail = smtp(host, port)
    mail.Charset = "auto"  # the page may hold any character
    set_from(mail, sender)
    mail.AddRecipientTo(to)
    mail.subject = "Prices in \u20ac"
    # Readers without HTML get this text; left empty, it is made from the page.
    mail.Message = "Our new prices are in the picture."
    mail.HTMLMessage = "<h1>Prices in \u20ac</h1><p><img src='cid:prices' alt='The list'></p>"
    mail.AddInlineFile(picture, "prices")  # what the page calls cid:prices
    mail.Send()
    print("Sent.")


if __name__ == "__main__":
    run(main, "SERVER FROM TO PICTURE [PORT]")
