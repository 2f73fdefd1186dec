"""Simple MAPI through Wine's own mapi32.dll: without a mail program behind it, and with the desk."""

import unittest

from scripting import ScriptTest, prefix_with_server


def setUpModule():
    MapiTest.wine = prefix_with_server()


class MapiTest(ScriptTest, unittest.TestCase):
    def test_a_workstation_without_a_mail_program(self):
        # Whoever answers for it logs everybody on, and supports little else.
        self.run_checks(self.wine, """
Set mail = CreateObject("QuillonInterface.Server")
Same "present", True, mail.QueryMailSystem(1) = -1
mail.mailSystem = 1
mail.loginName = "joe"
mail.Password = "secret"
mail.Login
Same "handle", True, mail.sessionHandle <> 0
On Error Resume Next
mail.LoadMessageHeaders
Raised "headers", 2026
mail.LoadMessageHeaders
RaisedText "headers", "Undetermined"
mail.UnreadCount
Raised "unread", 2026
mail.MoveMessage "Inbox"
Raised "move", 530
mail.MoveMessage "Inbox"
RaisedText "move", "Cannot move message with MAPI 0 (MAPIMoveMessage)"
mail.CopyMessage "Inbox"
RaisedText "copy", "Cannot copy message with MAPI 0"
mail.CreateFolder "Inbox"
Raised "folder", 530
Same "name", "ann <SMTP:ann>", mail.ResolveNameEx("ann")
mail.AddRecipientTo "ann@example.com"
mail.Send
Raised "send", 0
mail.Logout
Raised "logout", 0
Same "no handle", True, mail.sessionHandle = 0
""")


if __name__ == "__main__":
    unittest.main()
