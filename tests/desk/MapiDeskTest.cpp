// What the provider does behind the records: numbers, flags, walks and files.
#include <algorithm>
#include <gtest/gtest.h>

#include "desk/MapiDesk.h"
#include "support/TempFolder.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

class MapiDeskTest : public testing::Test {
 protected:
  MapiDeskTest()
      : place_(folder_.Path("store")),
        desk_(std::in_place, place_, [this](std::string_view word) { trouble_ += word; }) {
    EXPECT_EQ(0U, desk_->Logon("bob", "secret", 0, session_));
  }

  void File(const std::string& name, const std::string& bytes) {
    ReplaceBytes(place_ / name, bytes);
  }
  Mail To(const std::string& name, const std::string& subject = {}) {
    Mail mail;
    mail.subject = subject;
    mail.recipients.push_back({1, name, "", ""});
    return mail;
  }
  // The subjects found, in order, and the number that ended the walk.
  std::string Found(const std::string& type, std::uint32_t flags) {
    std::string found;
    std::string id;
    std::uint32_t number = 0;
    while ((number = desk_->FindNext(session_, type, std::string(id), flags, id)) == 0) {
      Mail mail;
      EXPECT_EQ(0U, desk_->ReadMail(session_, id, kMapiPeek | kMapiEnvelopeOnly, mail));
      found += mail.subject;
    }
    return found + std::to_string(number);
  }

  quillon::testing::TempFolder folder_;
  const fs::path place_;
  std::optional<MapiDesk> desk_;
  std::string trouble_;
  std::uint32_t session_ = 0;
};

TEST_F(MapiDeskTest, LogsOnWithTheRightPassword) {
  std::uint32_t other = 0;
  EXPECT_EQ(3U, desk_->Logon("bob", "wrong", kMapiLogonUi, other));
  EXPECT_EQ(3U, desk_->Logon("bob", "", 0, other));
  EXPECT_EQ(3U, desk_->Logon("nobody", "", 0, other));
  EXPECT_EQ(3U, desk_->Logon("", "wrong", 0, other));
  EXPECT_EQ(0U, desk_->Logon("", "", 0, other));
  EXPECT_NE(session_, other);
  EXPECT_EQ(0U, desk_->Logoff(other));
  EXPECT_EQ(19U, desk_->Logoff(other));
  Mail mail;
  std::string id;
  EXPECT_EQ(19U, desk_->FindNext(other, "", "", 0, id));
  EXPECT_EQ(19U, desk_->ReadMail(0, "00", 0, mail));
  EXPECT_EQ(19U, desk_->SendMail(other, To("bob"), 0));
  EXPECT_EQ(0U, desk_->SendMail(0, To("bob"), 0)) << "a session for this call";
  File("dialog.txt", "cancel\n");
  EXPECT_EQ(1U, desk_->Logon("bob", "wrong", kMapiLogonUi, other));
  const std::string calls = ReadBytes(place_ / "calls.txt").value();
  EXPECT_EQ(std::string::npos, calls.find("secret")) << "a password is written nowhere";
}

TEST_F(MapiDeskTest, WalksTheInbox) {
  EXPECT_EQ("16", Found("", 0));
  Mail report = To("bob", "r");
  report.type = "REPORT.IPM.Note.NDR";
  for (const char* subject : {"1", "2", "3"}) desk_->SendMail(session_, To("bob", subject), 0);
  desk_->SendMail(session_, report, 0);
  EXPECT_EQ("12316", Found("", kMapiGuaranteeFifo));
  EXPECT_EQ("32116", Found("", 0)) << "no order was promised";
  EXPECT_EQ("r16", Found("report.ipm.note.ndr", 0));
  EXPECT_EQ("12316", Found("IPM.Note", kMapiGuaranteeFifo));
  EXPECT_EQ("16", Found("IPM", 0));

  std::string first;
  std::string second;
  Mail mail;
  desk_->FindNext(session_, "", "", kMapiGuaranteeFifo, first);
  EXPECT_EQ(0U, desk_->ReadMail(session_, first, 0, mail));
  EXPECT_NE(0U, mail.flags & kMapiUnread) << "as it was before";
  EXPECT_EQ("2316", Found("", kMapiGuaranteeFifo | kMapiUnreadOnly));
  EXPECT_EQ(0U, desk_->DeleteMail(session_, first));
  EXPECT_EQ(0U, desk_->FindNext(session_, "", first, kMapiGuaranteeFifo, second))
      << "a walk goes on behind what it has deleted";
  EXPECT_EQ("2316", Found("", kMapiGuaranteeFifo));
  EXPECT_EQ(17U, desk_->FindNext(session_, "", "00", 0, first));
  EXPECT_EQ(17U, desk_->DeleteMail(session_, "00"));
}

TEST_F(MapiDeskTest, FilesAreFreshCopiesOrNone) {
  File("one", "1");
  Mail mail = To("bob");
  mail.files = {{7, place_ / "one", "shown.txt"}, {-1, place_ / "one", ""}};
  ASSERT_EQ(0U, desk_->SendMail(session_, mail, 0));
  std::string id;
  ASSERT_EQ(0U, desk_->FindNext(session_, "", "", 0, id));
  for (const std::uint32_t flags : {kMapiEnvelopeOnly, kMapiSuppressAttach}) {
    ASSERT_EQ(0U, desk_->ReadMail(session_, id, flags | kMapiPeek, mail));
    ASSERT_EQ(2U, mail.files.size());
    EXPECT_TRUE(mail.files[0].path.empty());
  }
  ASSERT_EQ(0U, desk_->ReadMail(session_, id, kMapiPeek, mail));
  EXPECT_EQ("shown.txt", mail.files[0].name);
  EXPECT_EQ(7, mail.files[0].position);
  EXPECT_EQ("one", mail.files[1].name);
  for (const MailFile& file : mail.files) {
    EXPECT_EQ("1", ReadBytes(file.path));
    EXPECT_TRUE(fs::remove(file.path)) << "the caller's to remove";
  }
  MapiDesk other(place_);
  Mail others;
  std::uint32_t session = 0;
  other.Logon("bob", "secret", 0, session);
  ASSERT_EQ(0U, desk_->ReadMail(session_, id, 0, mail)) << "and the store still has them";
  ASSERT_EQ(0U, other.ReadMail(session, id, 0, others));
  EXPECT_NE(mail.files[0].path, others.files[0].path);
  for (const MailFile& file : others.files) fs::remove(file.path);
  for (const MailFile& file : mail.files) fs::remove(file.path);

  mail = To("bob");
  mail.files = {{-1, place_ / "none", ""}};
  EXPECT_EQ(11U, desk_->SendMail(session_, mail, 0));
  mail.files = {{-1, place_, ""}};
  EXPECT_EQ(12U, desk_->SendMail(session_, mail, 0));
}

TEST_F(MapiDeskTest, RecipientsAreResolvedOrRefused) {
  EXPECT_EQ(14U, desk_->SendMail(session_, To("Nobody"), 0));
  EXPECT_EQ(21U, desk_->SendMail(session_, To("Sam"), 0));
  EXPECT_EQ(25U, desk_->SendMail(session_, Mail(), 0));
  Mail originator = To("bob");
  originator.recipients[0].kind = 0;
  EXPECT_EQ(15U, desk_->SendMail(session_, originator, 0));
  Mail known = To("Nobody");
  known.recipients[0].entryId = "SMTP:bob@desk.example";
  EXPECT_EQ(0U, desk_->SendMail(session_, known, 0)) << "needs no looking up";
  EXPECT_EQ("16", Found("", 0).substr(0)) << "without a subject";

  Party party;
  EXPECT_EQ(14U, desk_->ResolveName(session_, "Nobody", 0, party));
  EXPECT_EQ(21U, desk_->ResolveName(session_, "Sam", 0, party));
  EXPECT_EQ(1U, desk_->ResolveName(session_, "Nobody", kMapiDialog, party));
  EXPECT_EQ(1U, desk_->ResolveName(session_, "Sam", kMapiDialog, party));
  File("dialog.txt", "pick 2");
  EXPECT_EQ(0U, desk_->ResolveName(session_, "Sam", kMapiDialog, party));
  EXPECT_EQ("Sam Smithers", party.name);
  EXPECT_EQ(0U, desk_->ResolveName(session_, "ann", 0, party));
  EXPECT_EQ("SMTP:ann@desk.example", party.address);
}

TEST_F(MapiDeskTest, TheDialogDecides) {
  EXPECT_EQ(1U, desk_->SendMail(session_, To("bob", "a"), kMapiDialog)) << "there is no display";
  File("dialog.txt", "cancel");
  EXPECT_EQ(1U, desk_->SendMail(session_, To("bob", "b"), kMapiDialog));
  File("dialog.txt", "send\r\n");
  EXPECT_EQ(0U, desk_->SendMail(session_, To("bob", "c"), kMapiDialog));
  File("dialog.txt", "change subject d e");
  EXPECT_EQ(0U, desk_->SendMail(session_, To("bob", "x"), kMapiDialog));
  File("dialog.txt", "add bob");
  EXPECT_EQ(0U, desk_->SendMail(session_, Mail(), kMapiDialog));
  EXPECT_EQ("cd e16", Found("", kMapiGuaranteeFifo));
}

TEST_F(MapiDeskTest, CallsFailAsToldAndChangeNothing) {
  File("faults.txt", "MAPISendMail 18\nMAPILogoff 0x80004005\nMAPIDeleteMail pump 5\n");
  EXPECT_EQ(18U, desk_->SendMail(session_, To("bob", "a"), 0));
  EXPECT_EQ("16", Found("", 0));
  EXPECT_EQ(0x80004005U, desk_->Logoff(session_));
  EXPECT_EQ(17U, desk_->DeleteMail(session_, "00"));
  EXPECT_EQ("pump 5", trouble_);
}

}  // namespace
}  // namespace desk
