"""Every member of the public interface from VBScript: it is there, with the default, the accepted
and the refused values that the reference states, and the stated errors of an object that knows
nothing of any mail system."""

import re
import unittest

from scripting import SCRIPTS, ScriptTest
import check_docs
import winetest

# name, type, default | accepted | refused with 529
PROPERTIES = """
mailSystem           short  0       | 1 5 8 2 3 4 9 11 20 7 6 10 0   | 12 21 -1 40
subject              text   ""      | "a" ""                         |
Message              text   ""      | "a"                            |
postOffice           text   ""      | "a"                            |
DialogCaption        text   "Send Mail Message" | ""                 |
loginName            text   ""      | "a"                            |
MaximumHeaders       long   1000    | 1 2147483647                   | 0 -1 3000000000
Folder               text   ""      | "a"                            |
messageIndex         long   0       |                                | 0 -1 1
applicationName      text   ""      | "a"                            |
profile              text   ""      | "a"                            |
recipientDelimiter   text   ","     | ";"                            | ";;" ""
from                 text   ""      | "a"                            |
SMTPServer           text   ""      | "a"                            |
ProgressBar          short  7       | 0 7                            | -1 8
attachmentEncoding   short  2       | 0 255                          | -1 256
XMailer              text   "Quillon v1.0" | ""                      |
TimeoutProtocol      long   10000   | 2000 60000                     | 1999 60001
TimeoutConnect       long   30000   | 2000 60000                     | 1999 60001
ProgressBarThreshold long   10000   | 0 2147483647                   | -1
SMTPPort             short  25      | 2525 0                         |
POPPort              short  110     | 32767                          |
MessageType          text   ""      | "a"                            |
hWND                 long   0       | -1 2147483647                  |
UTCOffset            single -50     | -24 24 5.5 -50                 | -25 25 -49
AttachmentDirectory  text   ""      | "C:\\windows" ""               | "C:\\none"
ZipPassword          text   ""      | String(65,"x")                 | String(66,"x")
replyTo              text   ""      | "a"                            |
HTMLMessage          text   ""      | "<p>a" ""                      |
FolderDelimiter      text   "\\\\"  | "/"                            |
ConversationIndex    text   ""      | "a"                            |
SMTPSecurity         short  0       | 1 2 3 0                        | -1 4
POPSecurity          short  0       | 3                              | 4
SMTPLoginName        text   ""      | "a" ""                         |
Authentication       text   ""      | "plain,login" "SCRAM-SHA-256-PLUS" "" | "none"
Charset              text   ""      | "auto" "ISO-8859-1" "utf8" ""  | "nonsense" "utf-16"
PinnedCertificate    text   ""      | "key:"&String(64,"0") ""       | String(63,"0") String(64,"g")
Importance           short  3       | 1 5                            | 0 6
DeliveryReport       short  0       | 0 3                            | -1 4
DeliveryPriority     short  3       | 2 4                            | 1 5
Sensitivity          short  0       | 0 10                           | -1 11
dateFormat           short  0       | 3 5 0                          | 6 -1 1E300
"""

FALSE_FLAGS = """ErrorDisplay Certify NativeMailDialog DialogErrorOnCancel unreadOnly
suppressAttachments peekOnly forceDownload NameResolution HeadersInMessage suppressAlternatives
ReturnShortFilespecs InternetLogging signed Encrypt PreventCopying ConcatenateMessage
Extensions DetailedErrors RawHeaders ModernHeaders ExpandTnef TrackUnread"""
TRUE_FLAGS = "dateSort LoginDialog"

# name, expression that it equals on a new object; a put is no member of it
READ_ONLY = {
    "ServerVersion": '"1.0"',
    "ServerType": "CInt(32)",
    "messageCount": "CLng(0)",
    "sessionHandle": "CLng(0)",
    "DateSent": '""',
    "DefaultProfile": '""',
    "TLSVersion": '""',
    "ServerCertificate": '""',
    "LastServerReply": '""',
}

# What stands in the table above by name only, and everything that is no plain property: a member, a
# statement, and the error it raises. The mail system is Internet mail without any login data.
CALLS = """
AddRecipientTo         | mail.AddRecipientTo "  "                             | 0
AddRecipientTo         | If mail.GetMessageItemCount(1) <> 0 Then Err.Raise 5 | 0
AddRecipientCc         | mail.AddRecipientCc "cc@x"                           | 0
AddRecipientBcc        | mail.AddRecipientBcc "bcc@x"                         | 0
GetMessageItems        | mail.GetMessageItems 2, items, count                 | 0
GetMessageItems        | mail.GetMessageItems 8, items, count                 | 529
GetMessageItemString   | text = mail.GetMessageItemString(3)                  | 0
GetMessageItemCount    | count = mail.GetMessageItemCount(-1)                 | 529
GetMessageItem         | text = mail.GetMessageItem(3, 0)                     | 0
GetMessageItem         | text = mail.GetMessageItem(3, 1)                     | 529
GetMessageItem         | text = mail.GetMessageItem("To", 0)                  | 13
MessageItems           | Set object = mail.MessageItems(2)                    | 0
MessageItems           | Set object = mail.MessageItems(0)                    | 529
ClearMessageItems      | mail.ClearMessageItems 3                             | 0
ClearMessageItems      | mail.ClearMessageItems 7                             | 529
Send                   | mail.Send                                            | 544
Login                  | mail.Login                                           | 544
Logout                 | mail.Logout                                          | 0
LoadMessageHeaders     | mail.LoadMessageHeaders                              | 544
LoadMessageIdentifiers | mail.LoadMessageIdentifiers                          | 544
LoadMessage            | mail.LoadMessage                                     | 532
DeleteMessage          | mail.DeleteMessage                                   | 532
GetHeaderItems         | mail.GetHeaderItems 1, items, count                  | 532
GetHeaderItemString    | text = mail.GetHeaderItemString(1)                   | 532
HeaderItems            | Set object = mail.HeaderItems(1)                     | 532
UnreadCount            | count = mail.UnreadCount                             | 544
ResolveName            | text = mail.ResolveName("ann")                       | 544
ResolveNameEx          | text = mail.ResolveNameEx("ann")                     | 544
MoveMessage            | mail.MoveMessage "a"                                 | 530
CopyMessage            | mail.CopyMessage "a"                                 | 530
CreateFolder           | mail.CreateFolder "a"                                | 530
DeleteFolder           | mail.DeleteFolder "a"                                | 530
CopyFolder             | mail.CopyFolder "a", "b", 0                          | 530
FolderExists           | count = mail.FolderExists("a")                       | 530
GetFolderList          | mail.GetFolderList "", 0, 0, items, count            | 530
GetFolderListString    | mail.GetFolderListString "", 0, ";", 0, text, count  | 530
FolderList             | Set object = mail.FolderList("", 0, 0)               | 530
Post                   | mail.Post                                            | 530
SessionHandleEx        | count = mail.SessionHandleEx                         | 0
SessionHandleEx        | mail.SessionHandleEx = 1                             | 529
SessionObject          | Set object = mail.SessionObject                      | 530
SessionObject          | Set mail.SessionObject = mail                        | 530
MessageObject          | Set object = mail.MessageObject                      | 530
FolderObject           | Set object = mail.FolderObject                       | 530
NewMessage             | mail.NewMessage                                      | 0
Send                   | mail.Send                                            | 516
NewMessagePost         | mail.NewMessagePost                                  | 0
AddAttachment          | mail.AddAttachment " "                               | 0
AddAttachment          | mail.AddAttachment "C:\\none"                        | 521
AddAlternative         | mail.AddAlternative "C:\\none", "text/html", 0       | 521
AddAlternative         | mail.AddAlternative "", "text/html", 0               | 529
AddXHeader             | mail.AddXHeader "Test", "value"                      | 0
AddXHeader             | mail.AddXHeader " x-mailer ", "value"                | 545
AddXHeader             | mail.AddXHeader "two words", "value"                 | 529
AddHeader              | mail.AddHeader "List-Id", "<a.example.org>"           | 0
AddHeader              | mail.AddHeader "x-mailer", "value"                   | 545
AddHeader              | mail.AddHeader "Content-Language", "de"              | 545
AddHeader              | mail.AddHeader "two words", "value"                  | 529
AddInlineFile          | mail.AddInlineFile "C:\\none", "a"                   | 521
AddInlineFile          | mail.AddInlineFile "C:\\none", "a b"                 | 529
AddAttachmentEx        | mail.AddAttachmentEx "C:\\none", "a", ""             | 521
AddAttachmentEx        | mail.AddAttachmentEx "C:\\none", "", "text"          | 529
LoadMessageFromFile    | mail.LoadMessageFromFile " "                         | 547
LoadMessageFromFile    | mail.LoadMessageFromFile "C:\\none"                  | 548
SaveMessageToFile      | mail.SaveMessageToFile ""                            | 547
GetHeaderValueByName   | text = mail.GetHeaderValueByName("x")                | 0
GetWebFormValue        | text = mail.GetWebFormValue("x")                     | 0
ShowMailDialog         | mail.ShowMailDialog                                  | 522
ShowMailSystemDialog   | mail.ShowMailSystemDialog                            | 522
AsynchObjectRegister   | mail.AsynchObjectRegister mail, 1, 0, 0              | 542
AsynchObjectRegister   | mail.AsynchObjectRegister mail, 0, 2, 0              | 542
AsynchObjectRegister   | mail.AsynchObjectRegister 5, 0, 1, 0                 | 542
AsynchObjectRegister   | mail.AsynchObjectRegister "text", 0, 1, 0            | 542
AsynchObjectRegister   | mail.AsynchObjectRegister Nothing, 0, 1, 0           | 542
AsynchObjectUnregister | mail.AsynchObjectUnregister mail, 0                  | 0
AsynchAbort            | mail.AsynchAbort                                     | 538
GetInterfaceString     | text = mail.GetInterfaceString(41)                   | 0
GetInterfaceString     | text = mail.GetInterfaceString(43)                   | 0
GetInterfaceString     | text = mail.GetInterfaceString(44)                   | 529
DecodeError            | mail.DecodeError 0, count, a, b, text                | 0
undocumented1          | text = mail.undocumented1                            | 0
undocumented1          | mail.undocumented1 = "TEMPDIR"                       | 529
Password               | mail.Password = "a"                                  | 0
Password               | text = mail.Password                                 | 438
SMTPPassword           | mail.SMTPPassword = "a"                              | 0
SMTPPassword           | text = mail.SMTPPassword                             | 438
AccessToken            | mail.AccessToken = "a"                               | 0
AccessToken            | text = mail.AccessToken                              | 438
QueryMailSystem        | count = mail.QueryMailSystem(10)                     | 0
SetNativeSystem        | mail.SetNativeSystem                                 | 0
ServerPath             | text = mail.ServerPath                               | 0
"""

TYPES = {"short": "CInt", "long": "CLng", "single": "CSng", "text": ""}


ENTRY = re.compile(r"^### `(\w+)`\n\n(.*?)\n\n", re.M | re.S)
STATED = re.compile(r"Default (?:(empty)|`(\".*?\")`|(-?\d+))")


def rows(table):
    return [[cell.strip() for cell in line.split("|")] for line in table.strip().splitlines()]


def stated_defaults():
    """{member: default} as the entries of the reference have it."""
    defaults = {}
    for page in check_docs.REFERENCE.glob("*.md"):
        for name, entry in ENTRY.findall(page.read_text()):
            found = STATED.search(entry.replace("\n", " "))
            if found:
                empty, text, number = found.groups()
                defaults[name] = '""' if empty else text or number
    return defaults


def get(name, expected):
    return [f"value = Empty : value = mail.{name}", f'Raised "{name}", 0',
            f'Same "{name}", {expected}, value']


def put(name, value, error):
    shown = value.replace('"', "'")
    return [f"mail.{name} = {value}", f'Raised "{name} = {shown}", {error}']


def property_lines(name, convert, default, accepted, refused):
    lines = get(name, f"{convert}({default})")
    kept = default
    for value in accepted:
        lines += put(name, value, 0) + get(name, f"{convert}({value})")
        kept = value
    for value in refused:
        lines += put(name, value, 529) + get(name, f"{convert}({kept})")
    return lines + put(name, "Null", 13)


def script_of_properties():
    lines = []
    for head, accepted, refused in rows(PROPERTIES):
        name, kind, default = head.split(None, 2)
        lines += property_lines(name, TYPES[kind], default, accepted.split(), refused.split())
    for names, default in ((FALSE_FLAGS, "0"), (TRUE_FLAGS, "-1")):
        for name in names.split():
            lines += property_lines(name, "CInt", default, ["-1", "0"], ["1", "2"])
            lines += put(name, "True", 0) + get(name, "CInt(-1)") + put(name, "False", 0)
    for name, expected in READ_ONLY.items():
        lines += get(name, expected) + put(name, "1", 438)
    return "\n".join(lines)


class Members(ScriptTest, unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.wine = cls.enterClassContext(winetest.WinePrefix())
        cls.wine.register(winetest.SERVER)

    def run_on_new_object(self, text):
        self.run_checks(self.wine, "Dim value, text, count, items, object, a, b\n"
                        'Set mail = CreateObject("QuillonInterface.Server")\n'
                        "On Error Resume Next\n" + text)

    def test_properties(self):
        self.run_on_new_object(script_of_properties())

    def test_methods_and_special_properties(self):
        lines = ["mail.mailSystem = 10"]
        for name, statement, error in rows(CALLS):
            shown = statement.replace('"', "'")
            lines += [statement, f'Raised "{shown}", {error}']
        self.run_on_new_object("\n".join(lines))

    def test_no_member_is_left_out(self):
        touched = {cells[0].split()[0] for cells in rows(PROPERTIES) + rows(CALLS)}
        touched |= {*FALSE_FLAGS.split(), *TRUE_FLAGS.split(), *READ_ONLY}
        members = {name for name, interfaces in check_docs.idl_members(check_docs.IDL).items()
                   if "IServer" in interfaces}
        self.assertEqual({name.lower() for name in members}, {name.lower() for name in touched})

    def test_the_reference_states_these_defaults(self):
        defaults = {}
        for head, *_ in rows(PROPERTIES):
            name, _, defaults[name] = head.split(None, 2)
        defaults.update(dict.fromkeys(FALSE_FLAGS.split(), "0"))
        defaults.update(dict.fromkeys(TRUE_FLAGS.split(), "-1"))
        stated = stated_defaults()
        self.assertEqual(defaults, {name: stated.get(name) for name in defaults})

    def test_scripts(self):
        for script in sorted(SCRIPTS.iterdir()):
            if script.stem != "check":
                with self.subTest(script.name):
                    self.run_checks(self.wine, script.read_text(), engine=script.suffix[1:])


if __name__ == "__main__":
    unittest.main()
