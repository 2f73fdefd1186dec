// What leaves for each shape of message, byte by byte, and that our own reader gets the same files
// back.
#include <functional>
#include <gtest/gtest.h>

#include "codec/MessageSplitter.h"
#include "core/ServerError.h"
#include "core/WholeFile.h"
#include "internet/Boundary.h"
#include "internet/MessageComposer.h"
#include "internet/PartFields.h"
#include "mail/InstanceState.h"
#include "platform/Platform.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"
#include "support/ZipReader.h"

namespace quillon::testing {
namespace {

using Section = MessageData::Section;

constexpr std::size_t kBlock = 64 * 1024;

class StillClock final : public LocalClock {
 public:
  LocalTime Now() const override { return {2026, 11, 1, 0, 8, 5, 9, -210}; }
};

class MessageComposerTest : public ::testing::Test {
 protected:
  MessageComposerTest() {
    settings_.temporaryDirectory = temporary_.Path();
    message_.from = "joe@example.org";
    message_.whoTo = {"ann@example.org"};
    message_.charset = "us-ascii";
    message_.utcOffset = kUtcOffsetNotSet;
    message_.body = "A text.";
  }

  std::string File(const std::string& name, std::string_view content) {
    WriteWholeFile(*files_, sources_.Path(name), BytesOf(content));
    return sources_.Path(name);
  }
  void Attach(const std::string& name, std::string_view content) {
    message_.attachments.push_back({File(std::to_string(++made_), content), name});
  }
  void AddAlternative(const std::string& type, std::string_view content) {
    message_.alternatives.push_back({File(std::to_string(++made_), content), type});
  }

  std::unique_ptr<MessageData> Compose() {
    MessageComposer composer({disk_, *codePage_, clock_, log_}, settings_, message_);
    while (!composer.Step()) {
    }
    return composer.Take();
  }
  static std::string Drain(MessageData& data, std::size_t wanted = kBlock) {
    std::string wire;
    while (data.Fill(wire, wanted) == DataSource::State::More) {
    }
    return wire;
  }
  std::string Wire(std::size_t wanted = kBlock) { return Drain(*Compose(), wanted); }
  // From the description of the content on, without the fields that say nothing of it.
  std::string Content() {
    auto wire = Wire();
    wire.erase(0, wire.find("Content-"));
    const auto reply = wire.find("Reply-To");
    return wire.erase(reply, wire.find("\r\n\r\n") - reply);
  }

  // The attachments that our reader finds: "[name] file file ..." for each that is an archive.
  std::string ArchivesRead(std::string_view password) {
    std::string text;
    ReadBack([&](const std::string& name, const std::string& content) {
      text += "[" + name + "]";
      for (const auto& file : ReadZip(content, password)) text += " " + file.content;
    });
    return text;
  }

  // What our reader makes of the message, with the terminator's line end behind it.
  std::string ReadBack() {
    std::string files;
    const auto body = ReadBack([&](const std::string& name, const std::string& content) {
      files.append("[").append(name).append("]").append(content);
    });
    return body + files;
  }
  std::string ReadBack(
      const std::function<void(const std::string& name, const std::string& content)>& file) {
    const TempFolder received;
    SplitSettings split;
    split.directory = received.Path();
    MessageSplitter splitter(*files_, {*codePage_, *sets_}, split);
    auto wire = Wire(1000) + "\r\n";
    for (std::string_view rest = wire; !rest.empty();) {
      const auto end = rest.find("\r\n");
      auto line = rest.substr(0, end);
      if (line.starts_with("..")) line.remove_prefix(1);
      EXPECT_TRUE(splitter.Line(line, true));
      rest.remove_prefix(end + 2);
    }
    SplitMessage result;
    EXPECT_TRUE(splitter.Finish(result));
    for (const auto& attachment : result.attachments) {
      file(attachment.displayName, ContentOf(*files_, attachment.file));
    }
    return result.body;
  }

  std::int32_t FailureCode() {
    try {
      Compose();
    } catch (const ServerError& error) {
      failure_ = error.Text();
      return error.Code();
    }
    return 0;
  }

  TempFolder sources_;
  TempFolder temporary_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  FaultyFileSystem disk_{*files_};
  std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
  std::unique_ptr<CharacterEncoder> characterEncoder_ = MakeCharacterEncoder();
  StillClock clock_;
  ProtocolLog log_{*files_, sources_.Path()};
  ComposerSettings settings_;
  OutgoingMessage message_;
  std::string failure_;
  int made_ = 0;
};

constexpr std::string_view kOuter = "A-Quillon-Next-Part-7c15e9a80b42";
constexpr std::string_view kInner = "A-Quillon-Alternative-7c15e9a80b42";
constexpr std::string_view kPreamble =
    "> THIS IS A MESSAGE IN 'MIME' FORMAT.  Your mail reader does not support MIME.\r\n"
    "> Please read the first section, which is plain text, and ignore the rest.\r\n";
constexpr std::string_view kTextPart =
    "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
    "Content-Transfer-Encoding: 7bit\r\n\r\nA text.";
constexpr std::string_view kPagePart =
    "Content-Type: text/html; charset=\"us-ascii\"\r\n"
    "Content-Transfer-Encoding: base64\r\n\r\nPHA+\r\n";
constexpr std::string_view kFilePart =
    "Content-Type: application/octet-stream; name=\"a.txt\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "Content-Disposition: attachment; filename=\"a.txt\"\r\n\r\nb25l\r\n";

// The parts between their delimiters, whose line ends belong to them.
std::string Parts(std::string_view boundary, const std::vector<std::string_view>& parts) {
  std::string text;
  for (const auto part : parts) {
    text.append(text.empty() ? "--" : "\r\n--").append(boundary).append("\r\n").append(part);
  }
  return text.append("\r\n--").append(boundary).append("--");
}

std::string Multipart(const std::string& type, const std::vector<std::string_view>& parts) {
  return std::string("Content-Type: multipart/" + type + "; boundary=")
      .append(kOuter)
      .append("\r\n\r\n\r\n")
      .append(kPreamble)
      .append(Parts(kOuter, parts));
}

TEST_F(MessageComposerTest, EachShapeHasItsParts) {
  EXPECT_EQ(Content(), "Content-Type: text/plain; charset=\"us-ascii\"\r\n\r\n\r\nA text.");

  AddAlternative("text/html", "<p>");
  EXPECT_EQ(Content(), Multipart("alternative", {kTextPart, kPagePart}));

  Attach("a.txt", "one");
  const auto forms = std::string("Content-Type: multipart/alternative; boundary=")
                         .append(kInner)
                         .append("\r\n\r\n")
                         .append(Parts(kInner, {kTextPart, kPagePart}));
  EXPECT_EQ(Content(), Multipart("mixed", {forms, kFilePart}));
  message_.attachmentEncoding = 0;  // alternatives need MIME
  EXPECT_EQ(Content(), Multipart("mixed", {forms, kFilePart}));

  message_.alternatives.clear();
  message_.attachmentEncoding = 1;
  EXPECT_EQ(Content(),
            "Content-Transfer-Encoding: 7bit\r\n\r\n\r\nA text.\r\n"
            "begin 644 a.txt\r\n#;VYE\r\n`\r\nend\r\n");
  message_.attachmentEncoding = 3;
  EXPECT_EQ(Content(), Multipart("mixed", {kTextPart, kFilePart}));
}

TEST_F(MessageComposerTest, HtmlHasItsPicturesWithIt) {
  message_.html = ".\r\n<img src=\"cid:a@b\">\n\xC3\xA9";
  message_.htmlEncoder.emplace("utf-8", false, *characterEncoder_);
  constexpr std::string_view kHtml =
      "Content-Type: text/html; charset=\"utf-8\"\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n\r\n"
      "=2E\r\n<img src=3D\"cid:a@b\">\r\n=C3=A9";
  EXPECT_EQ(Content(), Multipart("alternative", {kTextPart, kHtml}));

  message_.inlineFiles.push_back(
      {File("picture", "one"), "a.png", {"image/png", "a@b"}, false, true});
  constexpr std::string_view kRelated = "A-Quillon-Related-7c15e9a80b42";
  const auto page =
      std::string("Content-Type: multipart/related;\r\n type=\"text/html\"; boundary=")
          .append(kRelated)
          .append("\r\n\r\n")
          .append(Parts(kRelated, {kHtml,
                                   "Content-Type: image/png; name=\"a.png\"\r\n"
                                   "Content-Transfer-Encoding: base64\r\n"
                                   "Content-ID: <a@b>\r\n"
                                   "Content-Disposition: inline; filename=\"a.png\""
                                   "\r\n\r\nb25l\r\n"}));
  EXPECT_EQ(Content(), Multipart("alternative", {kTextPart, page}));

  // Its own alternatives stay, and nothing but attachments is packed.
  AddAlternative("text/html", "<p>");
  Attach("a.txt", "one");
  const auto forms = std::string("Content-Type: multipart/alternative; boundary=")
                         .append(kInner)
                         .append("\r\n\r\n")
                         .append(Parts(kInner, {kTextPart, page, kPagePart}));
  EXPECT_EQ(Content(), Multipart("mixed", {forms, kFilePart}));
  message_.attachmentEncoding = attachment_encoding::kMime | attachment_encoding::kArchiveEach;
  EXPECT_NE(Content().find("filename=\"a.zip\""), std::string::npos);
  EXPECT_NE(Content().find("filename=\"a.png\""), std::string::npos);

  // No boundary of the message occurs in it.
  message_.html = "--A-Quillon-Next-Part-7c15e9a80b42\r\n--A-Quillon-Related-7c15e9a80b42";
  EXPECT_NE(Content().find("boundary=B-Quillon-Next-Part-"), std::string::npos);
  EXPECT_NE(Content().find("boundary=B-Quillon-Related-"), std::string::npos);
  message_.htmlEncoder.emplace("iso-8859-1", false, *characterEncoder_);
  message_.html = "\xE2\x82\xAC";
  EXPECT_EQ(FailureCode(), 529);
  EXPECT_NE(failure_.find("HTMLMessage"), std::string::npos) << failure_;
}

TEST_F(MessageComposerTest, TypesOfAttachments) {
  const auto typeOf = [&](const Attachment& attachment) {
    message_.attachments = {attachment};
    auto content = Content();
    content.erase(0, content.rfind("Content-Type: ") + 14);
    return content.substr(0, content.find(';'));
  };
  const auto file = File("a", "one");
  EXPECT_EQ(typeOf({file, "a.PDF"}), "application/octet-stream");
  EXPECT_EQ(typeOf({file, "a.pdf", {"image/gif", "received@x"}}), "application/octet-stream");
  EXPECT_EQ(typeOf({file, "a.pdf", {"image/gif", {}}, true}), "image/gif");
  message_.modern = true;
  message_.uniqueId = "1";
  EXPECT_EQ(typeOf({file, "a.tar.PDF"}), "application/pdf");
  EXPECT_EQ(typeOf({file, "pdf"}), "application/octet-stream");
  EXPECT_EQ(typeOf({file, "a.eml"}), "application/octet-stream");
  EXPECT_EQ(typeOf({file, "a.pdf", {"image/gif", {}}, true}), "image/gif");
}

TEST_F(MessageComposerTest, InACharacterSetEverythingSaysWhichItIs) {
  message_.encoder.emplace("auto", false, *characterEncoder_);
  message_.attachmentEncoding = 0;  // a text that is encoded has no room for uuencoded files
  message_.body = "plain";
  EXPECT_EQ(Content(),
            "Content-Type: text/plain; charset=\"us-ascii\"\r\n"
            "Content-Transfer-Encoding: 7bit\r\n\r\n\r\nplain");
  message_.body = "Привет";
  AddAlternative("text/html; charset=koi8-r", {"\xFF\xFE<\0p\0>\0\x1F\x04", 10});
  AddAlternative("text/enriched", "\xE4");
  AddAlternative("application/rtf", "\xE4");
  Attach("Übersicht.txt", "one");
  const auto forms =
      std::string("Content-Type: multipart/alternative; boundary=")
          .append(kInner)
          .append("\r\n\r\n")
          .append(Parts(kInner, {"Content-Type: text/plain; charset=\"utf-8\"\r\n"
                                 "Content-Transfer-Encoding: base64\r\n\r\n0J/RgNC40LLQtdGC\r\n",
                                 "Content-Type: text/html; charset=\"utf-8\"\r\n"
                                 "Content-Transfer-Encoding: quoted-printable\r\n\r\n<p>=D0=9F",
                                 "Content-Type: text/enriched; charset=\"utf-8\"\r\n"
                                 "Content-Transfer-Encoding: quoted-printable\r\n\r\n=C3=A4",
                                 "Content-Type: application/rtf\r\n"
                                 "Content-Transfer-Encoding: base64\r\n\r\n5A==\r\n"}));
  EXPECT_EQ(Content(),
            Multipart("mixed", {forms,
                                "Content-Type: application/octet-stream;\r\n"
                                " name=\"=?utf-8?Q?=C3=9Cbersicht=2Etxt?=\"\r\n"
                                "Content-Transfer-Encoding: base64\r\n"
                                "Content-Disposition: attachment;\r\n"
                                " filename*=utf-8''%C3%9Cbersicht.txt\r\n\r\nb25l\r\n"}));
}

TEST_F(MessageComposerTest, WhatTheSetLacksIsNamedOrReplaced) {
  const struct {
    std::function<void()> put;
    const char* failure;
  } kCases[] = {
      {[&] { message_.body = "5 €"; }, "Message"},
      {[&] { message_.subject = "5 €"; }, "subject"},
      {[&] { message_.from = "€ <joe@example.org>"; }, "from"},
      {[&] { message_.cc = {"ann@example.org, € <bob@example.org>"}; }, "A recipient"},
      {[&] { message_.replyTo = "€ <joe@example.org>"; }, "replyTo"},
      {[&] {
         message_.xHeaders = {{"Price", "€"}};
       },
       "X-Price"},
      {[&] {
         message_.headers = {{"Comments", "€"}};
       },
       "Comments"},
      {[&] { AddAlternative("text/html", "€"); }, "An alternative"},
      {[&] { Attach("€.txt", "one"); }, "The name of an attachment"},
  };
  const auto before = message_;
  for (const auto& test : kCases) {
    message_ = before;
    message_.encoder.emplace("iso-8859-1", false, *characterEncoder_);
    test.put();
    EXPECT_EQ(FailureCode(), 529);
    EXPECT_EQ(failure_, std::string(test.failure) +
                            " holds what the character set iso-8859-1 lacks: U+20AC (€).");
    EXPECT_EQ(temporary_.Names(), std::vector<std::string>());
    message_.encoder.emplace("iso-8859-1", true, *characterEncoder_);
    EXPECT_EQ(FailureCode(), 0) << test.failure;
  }
}

TEST_F(MessageComposerTest, TheModernFormEncodesLinesThatAreTooLong) {
  message_.body = std::string(1000, 'x') + "\n";
  EXPECT_EQ(Wire().find("quoted-printable"), std::string::npos);
  message_.modern = true;
  const auto wire = Wire();
  EXPECT_NE(wire.find("Content-Transfer-Encoding: quoted-printable\r\n"), std::string::npos);
  EXPECT_EQ(ReadBack(), std::string(1000, 'x') + "\r\n\r\n");
  for (std::string_view rest = wire; !rest.empty();) {
    const auto line = rest.substr(0, rest.find("\r\n"));
    EXPECT_LE(line.size(), 76U);
    rest.remove_prefix(std::min(rest.size(), line.size() + 2));
  }
}

TEST_F(MessageComposerTest, OurReaderGetsTheSameTextAndFiles) {
  for (const std::int16_t encoding : {std::int16_t{0}, attachment_encoding::kMime}) {
    for (const auto* const text : {"", "A text.", "Lines\r\n.two\r\n", "begin at noon\r\n\r\n"}) {
      message_.body = text;
      message_.attachmentEncoding = encoding;
      message_.attachments.clear();
      std::string files;
      for (const std::size_t size : {0U, 1U, 2U, 14U, 45U, 57U, 59U, 1800U, 1814U, 300'000U}) {
        std::string content;
        for (std::size_t at = 0; at < size; ++at) content += static_cast<char>(at * at / 7);
        const auto name = "size" + std::to_string(size) + ".bin";
        Attach(name, content);
        files += "[" + name + "]" + content;
      }
      const auto back = ReadBack();
      const auto body = back.substr(0, back.find("[size0.bin]"));
      // The line ends behind the text and behind the blocks stay.
      EXPECT_TRUE(encoding == 0 ? body.starts_with(text) : body == text) << body;
      EXPECT_EQ(back.substr(body.size()), files) << encoding << text;
      EXPECT_EQ(temporary_.Names(), std::vector<std::string>());
    }
  }
}

TEST_F(MessageComposerTest, AttachmentsArePackedAsTheFlagsSay) {
  Attach("report.old.doc", "one");
  Attach("table.csv", "two");
  const struct {
    int encoding;
    const char* archives;
  } kCases[] = {
      {2 + 64, "[report.old.zip] one two"},
      {2 + 128, "[report.old.zip] one[table.zip] two"},
      {2 + 64 + 128, "[report.old.zip] one two"},
      {64, "[report.old.zip] one two"},
      {128, "[report.old.zip] one[table.zip] two"},
  };
  for (const auto& test : kCases) {
    message_.attachmentEncoding = static_cast<std::int16_t>(test.encoding);
    for (const auto* const password : {"", "secret"}) {
      message_.zipPassword = password;
      EXPECT_EQ(ArchivesRead(password), test.archives) << test.encoding << password;
      EXPECT_EQ(temporary_.Names(), std::vector<std::string>());
    }
  }
  const auto enough = std::exchange(disk_.writeBudget, 50);
  EXPECT_EQ(FailureCode(), 534);
  EXPECT_EQ(temporary_.Names(), std::vector<std::string>());
  disk_.writeBudget = enough;
  message_.attachments.clear();
  EXPECT_EQ(FailureCode(), 0);
}

TEST_F(MessageComposerTest, TheSameBytesHoweverTheyAreAskedFor) {
  Attach("dots.bin", std::string(45, 'x') + "fourteen bytes");
  AddAlternative("text/html", std::string(1000, 'y'));
  message_.body = "one\n.two\n";
  for (const std::int16_t encoding : {std::int16_t{0}, attachment_encoding::kMime}) {
    message_.attachmentEncoding = encoding;
    for (const std::int32_t blockSize : {0, 1, 5}) {
      settings_.blockSize = 0;
      const auto whole = Wire();
      settings_.blockSize = blockSize;
      for (const std::size_t wanted : {1U, 2U, 63U, 100U}) EXPECT_EQ(Wire(wanted), whole);
    }
    message_.alternatives.clear();
  }
}

TEST_F(MessageComposerTest, TheTextLeavesInPiecesOfTheBlockSize) {
  message_.body.assign(1000, 'x');
  settings_.blockSize = 300;
  const auto data = Compose();
  std::vector<std::size_t> sizes;
  for (auto state = DataSource::State::More; state == DataSource::State::More;) {
    std::string block;
    state = data->Fill(block, kBlock);
    sizes.push_back(block.size());
  }
  sizes.erase(sizes.begin());  // the header block
  EXPECT_EQ(sizes, (std::vector<std::size_t>{300, 300, 300, 100}));
}

TEST_F(MessageComposerTest, SectionsAreToldApart) {
  Attach("a.txt", "one");
  AddAlternative("text/html", "<p>");
  const auto data = Compose();
  std::vector<std::pair<Section, std::string>> sections;
  for (auto state = DataSource::State::More; state == DataSource::State::More;) {
    const auto section = data->Current();
    std::string block;
    state = data->Fill(block, kBlock);
    sections.emplace_back(section, block);
  }
  ASSERT_EQ(sections.size(), 3U);
  EXPECT_EQ(sections[0].first, Section::Text);
  EXPECT_TRUE(sections[0].second.ends_with("A text."));
  EXPECT_EQ(sections[1].first, Section::Alternatives);
  EXPECT_NE(sections[1].second.find("PHA+"), std::string::npos);
  EXPECT_EQ(sections[2].first, Section::Attachments);
  EXPECT_NE(sections[2].second.find("b25l"), std::string::npos);
}

TEST_F(MessageComposerTest, NothingStaysWhateverFails) {
  Attach("a.bin", std::string(100'000, 'a'));
  AddAlternative("text/html", std::string(100'000, 'b'));
  const auto missing = sources_.Path("none");
  for (const std::int16_t encoding : {std::int16_t{0}, attachment_encoding::kMime}) {
    message_.attachmentEncoding = encoding;
    const auto enough = disk_.writeBudget;
    for (const std::uint64_t room : {0U, 1000U, 99'000U}) {
      disk_.writeBudget = room;
      EXPECT_EQ(FailureCode(), 535) << room;
      EXPECT_EQ(temporary_.Names(), std::vector<std::string>());
    }
    disk_.writeBudget = enough;
    disk_.closeFails = true;
    EXPECT_EQ(FailureCode(), 535);
    disk_.closeFails = false;
    message_.alternatives.clear();
  }
  message_.attachments.push_back({missing, "none"});
  EXPECT_EQ(FailureCode(), 521);
  EXPECT_EQ(failure_, "Attachment " + missing + " does not exist.");
  message_.alternatives.push_back({missing, "text/html"});
  EXPECT_EQ(FailureCode(), 521);
  EXPECT_EQ(failure_, "Alternative " + missing + " does not exist.");
  EXPECT_EQ(temporary_.Names(), std::vector<std::string>());

  message_.alternatives.clear();
  message_.attachments.pop_back();
  settings_.temporaryDirectory = missing;
  EXPECT_EQ(FailureCode(), 535);
}

TEST_F(MessageComposerTest, TheEncodedFilesAreThereUntilTheMessageIsOut) {
  Attach("a.txt", "one");
  settings_.keepTemporaryFiles = true;
  Compose();
  const auto kept = temporary_.Names();
  ASSERT_EQ(kept.size(), 1U);
  EXPECT_EQ(ContentOf(*files_, temporary_.Path(kept[0] + "/1.UUE")), "b25l\r\n");
}

TEST_F(MessageComposerTest, AFileThatBreaksOffFailsInItsSection) {
  AddAlternative("text/html", std::string(100'000, 'b'));
  Attach("a.bin", std::string(100'000, 'a'));
  const struct {
    std::uint64_t readable;
    Section section;
  } kCases[] = {{0, Section::Alternatives},
                {1000, Section::Alternatives},
                {140'000, Section::Attachments},
                {200'000, Section::Attachments}};
  for (const auto& test : kCases) {
    const auto data = Compose();
    const auto enough = std::exchange(disk_.readBudget, test.readable);
    std::string wire;
    auto state = DataSource::State::More;
    while (state == DataSource::State::More) state = data->Fill(wire, kBlock);
    EXPECT_EQ(state, DataSource::State::Failed) << test.readable;
    EXPECT_EQ(data->Current(), test.section) << test.readable;
    disk_.readBudget = enough;
  }
}

TEST(Boundary, NeverOccursInTheText) {
  const std::string fixed = "-fixed";
  std::string letters;
  for (char letter = 'A'; letter <= 'Z'; ++letter) letters += letter + fixed + "\n";
  const struct {
    std::string text;
    std::string boundary;
  } kCases[] = {
      {"", "A-fixed"},
      {"-fixed", "A-fixed"},
      {"A-fixed", "B-fixed"},
      {"B-fixed A-fixed", "C-fixed"},
      {"a-fixed -fixed B-fixed", "A-fixed"},
      {letters, "Z-fixed000000000"},
      {letters + "Z-fixed000000001 Z-fixed000000000", "Z-fixed000000002"},
      {letters + "Z-fixed0", "Z-fixed000000000"},
  };
  for (const auto& test : kCases) EXPECT_EQ(ChooseBoundary(test.text, fixed), test.boundary);
  // Neither of the two can be taken for the other.
  EXPECT_NE(OuterBoundary("").substr(0, 12), InnerBoundary("").substr(0, 12));
}

TEST(PartFields, NamesAreQuotedAndCannotStartAnotherField) {
  const auto codePage = MakeAnsiCodePage();
  const struct {
    std::string name;
    std::string quoted;
    std::string extended;
  } kCases[] = {
      {"report.pdf", "report.pdf", ""},
      {"a \"b\" \\c.txt", "a \\\"b\\\" \\\\c.txt", ""},
      {std::string("a\r\n\r\n--b\0c", 10), "a--bc", ""},
      {"Gr\xC3\xBC\xC3\x9F.txt", "Gr\xFC\xDF.txt", ";\r\n filename*=utf-8''Gr%C3%BC%C3%9F.txt"},
      {"\xE6\x97\xA5 %.txt", "? %.txt", ";\r\n filename*=utf-8''%E6%97%A5%20%25.txt"},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(FileFields({test.name, "application/octet-stream", {}}, *codePage),
              "Content-Type: application/octet-stream; name=\"" + test.quoted +
                  "\"\r\nContent-Transfer-Encoding: base64\r\n"
                  "Content-Disposition: attachment; filename=\"" +
                  test.quoted + "\"" + test.extended + "\r\n\r\n");
  }
  std::string umlauts;
  for (int count = 0; count < 300; ++count) umlauts += "\xC3\xA4";
  const auto fields = FileFields({umlauts, "image/png", "a@b"}, *codePage);
  EXPECT_NE(fields.find("\r\nContent-ID: <a@b>\r\n"), std::string::npos);
  EXPECT_NE(fields.find("\r\nContent-Disposition: inline; filename="), std::string::npos);
  EXPECT_NE(fields.find(";\r\n filename*0*=utf-8''%C3%A4"), std::string::npos);
  EXPECT_NE(fields.find(";\r\n filename*1*=%"), std::string::npos);
  EXPECT_NE(
      AlternativeFields("text/html\r\nEvil: yes", "us-ascii\n\n", "base64").find("html Evil: yes;"),
      std::string::npos);
}

}  // namespace
}  // namespace quillon::testing
