"""What stands where in the navigation of the site: every document does, once. One that has others
below it is a pair of itself and these."""

HOME = "docs/index.md"
MEMBERS = "docs/reference/members.md"  # written by members.py

NAVIGATION = [
    ("First steps", [
        "docs/installing.md",
        "docs/todays-servers.md",
        "docs/languages.md",
        "docs/sending-a-lot.md",
        "samples/README.md",
        ("examples/README.md", ["examples/provider/README.md"]),
        "docs/troubleshooting.md",
    ]),
    ("Reference", [
        MEMBERS,
        ("docs/reference/README.md", [
            "docs/reference/composition.md",
            "docs/reference/receiving.md",
            "docs/reference/items.md",
            "docs/reference/mail-systems.md",
            "docs/reference/internet.md",
            "docs/reference/folders.md",
            "docs/reference/notification.md",
            "docs/reference/diagnostics.md",
            "docs/reference/address-book.md",
            "docs/reference/dialer.md",
            "docs/reference/commands.md",
        ]),
        "docs/reference/errors.md",
    ]),
    ("Mail", [
        "docs/internet.md",
        ("docs/oauth.md", [
            "docs/providers-of-mail/google.md",
            "docs/providers-of-mail/microsoft.md",
        ]),
        ("docs/received-messages.md", [
            "docs/dates.md",
            "docs/encodings.md",
            "docs/zip.md",
        ]),
        ("docs/mail-systems/README.md", [
            "docs/mail-systems/simple-mapi.md",
            "docs/mail-systems/active-messaging.md",
            "docs/mail-systems/vim.md",
            "docs/mail-systems/notes.md",
            "docs/mail-systems/mhs.md",
            "docs/mail-systems/vines.md",
        ]),
        "docs/providers.md",
    ]),
    ("Running it", [
        "docs/process.md",
        "docs/clients-64.md",
        "docs/command-line.md",
        "docs/configuration.md",
        "docs/dialogs.md",
        "docs/unattended.md",
        "docs/security.md",
        "docs/performance.md",
    ]),
    ("The project", [
        "README.md",
        "CHANGELOG.md",
        ("CONTRIBUTING.md", ["docs/mailhost.md", "tests/conversations/README.md"]),
        "LICENSE",
    ]),
]

# Where a title of its own would not be understood in a list.
TITLES = {
    "README.md": "Readme",
    "docs/dialogs.md": "Windows of the program",
    "docs/mail-systems/README.md": "Mail systems",
    "docs/reference/README.md": "By topic",
    "LICENSE": "License",
}


def documents(items):
    """All that an entry, or a list of them, names."""
    for item in items:
        if isinstance(item, tuple):
            yield item[0]
            yield from documents(item[1])
        else:
            yield item
