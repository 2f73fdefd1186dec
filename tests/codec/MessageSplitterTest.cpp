#include <gtest/gtest.h>

#include "codec/MessageSplitter.h"
#include "core/Text.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using namespace std::string_view_literals;
using testing::ContentOf;
using testing::TempFolder;

constexpr std::size_t kWhole = static_cast<std::size_t>(-1);

// Feeds a message, given with LF line ends, in lines, or in pieces of at most so many characters.
bool Feed(MessageSplitter& splitter, std::string_view message, std::size_t pieceSize) {
  while (!message.empty()) {
    const auto end = message.find('\n');
    auto line = message.substr(0, end);
    message.remove_prefix(end == std::string_view::npos ? message.size() : end + 1);
    while (line.size() > pieceSize) {
      if (!splitter.Line(line.substr(0, pieceSize), false)) return false;
      line.remove_prefix(pieceSize);
    }
    if (!splitter.Line(line, true)) return false;
  }
  return true;
}

class MessageSplitterTest : public ::testing::Test {
 protected:
  // The body, and each attachment as "[path|shown name] content".
  std::string Split(std::string_view message, std::size_t pieceSize = kWhole) {
    TempFolder folder;
    settings_.directory = folder.Path();
    MessageSplitter splitter(*files_, {*codePage_, *sets_}, settings_);
    SplitMessage split;
    if (!Feed(splitter, message, pieceSize) || !splitter.Finish(split)) return "failed";
    html_ = split.html;
    labels_.clear();
    for (const auto& attachment : split.attachments) {
      labels_ += "[" + attachment.label.contentType + "|" + attachment.label.contentId + "]";
    }
    auto text = split.body;
    for (const auto& attachment : split.attachments) {
      text += "[" + attachment.file.substr(folder.Path().size() + 1) + "|" +
              attachment.displayName + "] " + ContentOf(*files_, attachment.file);
    }
    return text;
  }

  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
  SplitSettings settings_;
  std::string html_;  // of the message last split
  std::string labels_;
};

// A multipart of the type with parts that each start with their header.
std::string Multipart(const std::string& type, const std::vector<std::string>& parts,
                      const std::string& boundary = "b") {
  auto text = "Content-Type: multipart/" + type + "; boundary=" + boundary + "\n\npreamble\n";
  for (const auto& part : parts) text += "--" + boundary + "\n" + part + "\n";
  return text + "--" + boundary + "--\nepilogue\n";
}

TEST_F(MessageSplitterTest, ShapesOfMessages) {
  const std::string html = "Content-Type: text/html\n\n<b>hi</b>";
  const std::string plain = "Content-Type: text/plain\n\nhi";
  const std::string pdf =
      "Content-Type: application/pdf; name=\"a.pdf\"\nContent-Transfer-Encoding: base64\n\nUERG";
  const std::string image = "Content-Type: image/png\nContent-Transfer-Encoding: base64\n\nUERG";
  const struct {
    const char* what;
    std::string message;
    const char* expected;
  } kCases[] = {
      {"plain", "Subject: x\n\none\ntwo\n", "one\r\ntwo\r\n"},
      {"no header", "\nbody", "body\r\n"},
      {"header alone", "Subject: x\n", ""},
      {"quoted-printable", "Content-Transfer-Encoding: quoted-printable\n\na=3Db=\nc  \nd\n",
       "a=bc\r\nd\r\n"},
      {"base64 text", "Content-Type: text/plain\nContent-Transfer-Encoding: BASE64\n\naGk=\n",
       "hi"},
      {"HTML alone is the body", html, "<b>hi</b>\r\n"},
      {"file alone", pdf, "[a.pdf|a.pdf] PDF"},
      {"alternative", Multipart("alternative", {plain, html}),
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>hi</b>"},
      {"alternative, HTML first", Multipart("alternative", {html, plain}),
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>hi</b>"},
      {"unknown rendering", Multipart("alternative", {plain, "Content-Type: text/x-odd\n\no"}),
       "hi[ALTERNAT.DAT|ALTERNAT.DAT] o"},
      {"zipped rich text",
       Multipart("alternative", {plain, "Content-Type: text/richtext-zipped\n\no"}),
       "hi[ALTERNAT.RTZ|ALTERNAT.RTZ] o"},
      {"mixed", Multipart("mixed", {plain, pdf, "\nmore"}), "hi\r\nmore[a.pdf|a.pdf] PDF"},
      {"HTML beside text", Multipart("mixed", {plain, html}),
       "hi[NONAME.HTM|NONAME.HTM] <b>hi</b>"},
      {"alternative with related in mixed",
       Multipart(
           "mixed",
           {Multipart("alternative", {plain, Multipart("related", {html, image}, "r")}, "a"), pdf}),
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>hi</b>[NONAME.PNG|NONAME.PNG] PDF[a.pdf|a.pdf] PDF"},
      {"signed", Multipart("signed", {plain, "Content-Type: application/pgp-signature\n\nsig"}),
       "hi[NONAME.ASC|NONAME.ASC] sig"},
      {"report",
       Multipart("report; report-type=delivery-status",
                 {plain, "Content-Type: message/delivery-status\n\nAction: failed",
                  "Content-Type: message/rfc822\n\nSubject: in\n\nside"}),
       "hi[NONAME.TXT|NONAME.TXT] Action: failed[NONAME.EML|NONAME.EML] Subject: in\r\n\r\nside"},
      {"digest", Multipart("digest", {"\nSubject: 1\n\na", "\nSubject: 2\n\nb"}),
       "[NONAME.EML|NONAME.EML] Subject: 1\r\n\r\na[NONAM1.EML|NONAME.EML] Subject: 2\r\n\r\nb"},
      {"forwarded message with a subject for a name",
       Multipart("mixed", {plain, "Content-Type: message/rfc822; name=\"Hello\"\n\nSubject: s\n"}),
       "hi[Hello.EML|Hello.EML] Subject: s\r\n"},
      {"web form", "Content-Type: application/x-www-form-urlencoded\n\na=b&c=d\n", "a=b&c=d\r\n"},
      {"web form with a name",
       "Content-Type: application/x-www-form-urlencoded; name=post.att\n\na=b\n", "a=b\r\n"},
      {"web form as a part",
       Multipart("mixed", {"Content-Type: application/x-www-form-urlencoded\n\na=b"}),
       "[NONAME.DAT|NONAME.DAT] a=b"},
      {"text as attachment",
       Multipart("mixed", {plain, "Content-Disposition: attachment; filename=n.txt\n\nnote"}),
       "hi[n.txt|n.txt] note"},
  };
  for (const auto& test : kCases) {
    for (const auto pieceSize : {kWhole, std::size_t{30}}) {
      EXPECT_EQ(test.expected, Split(test.message, pieceSize)) << test.what;
    }
  }
}

TEST_F(MessageSplitterTest, BrokenMultipartsKeepWhatTheyHold) {
  const struct {
    const char* what;
    const char* message;
    const char* expected;
  } kCases[] = {
      {"no boundary parameter", "Content-Type: multipart/mixed\n\n--b\n\nhi\n--b--",
       "--b\r\n\r\nhi\r\n--b--\r\n"},
      {"boundary never met", "Content-Type: multipart/mixed; boundary=x\n\nhi\n--b--",
       "hi\r\n--b--\r\n"},
      {"never closed", "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nhi\n", "hi\r\n"},
      {"closed at once", "Content-Type: multipart/mixed; boundary=b\n\nhi\n--b--\n\nkept\n",
       "hi\r\n\r\nkept\r\n"},
      {"inner closed at once with text in it",
       "Content-Type: multipart/mixed; boundary=o\n\n--o\nContent-Type: multipart/mixed; "
       "boundary=i\n\none\n--i--\n--o\n\ntwo\n--o--",
       "one\r\ntwo"},
      {"blanks behind boundaries",
       "Content-Type: multipart/mixed; boundary=\"b \"\n\n--b \t\n\nhi\n--b-- \nx", "hi"},
      {"boundary that begins another",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nhi\n--bb\nstill\n--b-\n--b--",
       "hi\r\n--bb\r\nstill\r\n--b-"},
      {"text behind the last boundary",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\n\nhi\n--b c\n--b--c\nepilogue",
       "hi\r\n--b c"},
      {"inner boundary that begins the outer one",
       "Content-Type: multipart/mixed; boundary=b--c\n\n--b--c\nContent-Type: multipart/mixed; "
       "boundary=b\n\n--b\n\none\n--b--c\n\ntwo\n--b--c--",
       "one\r\ntwo"},
      {"blank at the start of a boundary",
       "Content-Type: multipart/mixed; boundary=\" b\"\n\n-- b\n\nhi\n-- b--", "hi"},
      {"boundary of blanks", "Content-Type: multipart/mixed; boundary=\" \"\n\n--\n\nhi\n----",
       "--\r\n\r\nhi\r\n----\r\n"},
      {"inner never closed",
       "Content-Type: multipart/mixed; boundary=o\n\n--o\nContent-Type: multipart/mixed; "
       "boundary=i\n\n--i\n\none\n--o\n\ntwo\n--o--",
       "one\r\ntwo"},
      {"inner closed before its parts",
       "Content-Type: multipart/mixed; boundary=o\n\n--o\nContent-Type: multipart/mixed; "
       "boundary=i\n\n--i--\n--o\n\ntwo\n--o--",
       "two"},
      {"inner ends in its header",
       "Content-Type: multipart/mixed; boundary=o\n\n--o\nContent-Type: multipart/mixed; "
       "boundary=i\n--o\n\ntwo\n--o--",
       "two"},
      {"part without a blank line",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\nhi there\n--b--", "hi there"},
      {"named part without content",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Disposition: attachment; "
       "filename=e.txt\n--b--",
       "[e.txt|e.txt] "},
      {"folded header with tabs",
       "Content-Type: multipart/mixed;\n\tboundary=\"b\"\n\n--b\n\nhi\n--b--", "hi"},
      {"a file name is not a type",
       "Content-Type: application/octet-stream; name=\"multipart.context\"\n\nx",
       "[multipart.context|multipart.context] x\r\n"},
      {"the first of a field counts", "Content-Type: text/plain\nContent-Type: image/png\n\nhi",
       "hi\r\n"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, Split(test.message)) << test.what;
}

TEST_F(MessageSplitterTest, AHeaderEndsWhereNoFieldCanBe) {
  const std::string plain = "Content-Type: text/plain\n";
  const struct {
    const char* what;
    std::string message;
    const char* expected;
  } kCases[] = {
      {"text behind fields", "Subject: x\nDear Ann,\n\nNote: hi\n",
       "Dear Ann,\r\n\r\nNote: hi\r\n"},
      {"text with a colon", "Subject: x\nDear Ann: hi\n", "Dear Ann: hi\r\n"},
      {"text behind fields of a part", Multipart("mixed", {plain + "hi there\nb: c", plain + "d"}),
       "hi there\r\nb: c\r\nd"},
      {"decoded as the fields say", "Content-Transfer-Encoding: base64\naGkh\n", "hi!"},
      {"blanks in the empty line", "Subject: x\n \t\nhi\n\nthere\n", "hi\r\n\r\nthere\r\n"},
      {"indented text behind such a line", plain + " \n  hi\n\n there\n", "  hi\r\n\r\n there\r\n"},
      {"boundary behind fields", "Content-Type: multipart/mixed; boundary=b\n--b\n\nhi\n--b--\n",
       "hi"},
      {"indented text before a boundary",
       "Content-Type: multipart/mixed; boundary=b\n \n preamble\n--b\n\nhi\n--b--\n", "hi"},
      {"indented text at the end of a part", Multipart("mixed", {plain + " \n hi", "\nthere"}),
       " hi\r\nthere"},
      {"blanks in the empty line of a part without a header", Multipart("mixed", {" \nhi"}), "hi"},
      {"indented part without a header", Multipart("mixed", {"  hi\nthere you"}),
       "  hi\r\nthere you"},
      {"a fold that begins with a line of blanks",
       "Content-Type: multipart/mixed;\n \n\tboundary=b\nX: y\n\n--b\n\nhi\n--b--\n", "hi"},
      {"blanks before the colon", "Content-Transfer-Encoding : base64\n\naGkh\n", "hi!"},
      {"mailbox line", "From ann@x Mon Nov  2 10:00:00 2026\n" + plain + "\nhi\n", "hi\r\n"},
  };
  for (const auto& test : kCases) {
    for (const auto pieceSize : {kWhole, std::size_t{30}}) {
      EXPECT_EQ(test.expected, Split(test.message, pieceSize)) << test.what;
    }
  }
}

TEST_F(MessageSplitterTest, UuencodedFilesAreTakenOutOfText) {
  const struct {
    const char* what;
    const char* message;
    std::string_view expected;
  } kCases[] = {
      {"between text", "\nbefore\nbegin 644 a b.txt\n#:&DA\n`\nend\nafter",
       "before\r\nafter\r\n[a b.txt|a b.txt] hi!"},
      {"stripped last line", "\nbegin 0644 a.txt\n#:&DA\n\nend\nafter",
       "after\r\n[a.txt|a.txt] hi!"},
      {"no end", "\nbegin 644 a.txt\n#:&DA\n", "[a.txt|a.txt] hi!"},
      {"broken off by text", "\nbegin 644 a.txt\n#:&DA\nlower case text",
       "lower case text\r\n[a.txt|a.txt] hi!"},
      {"base64 framing", "\nbegin-base64 644 a.txt\naGkh\n====\nafter",
       "after\r\n[a.txt|a.txt] hi!"},
      {"only words", "\nbegin 644 lines of text\nlike these",
       "begin 644 lines of text\r\nlike these\r\n"},
      {"a begin at the very end", "\nhi\nbegin 644 x", "hi\r\nbegin 644 x\r\n"},
      {"a begin behind another", "\nbegin 644 x\nbegin 644 a.txt\n#:&DA\n`\nend\n",
       "begin 644 x\r\n[a.txt|a.txt] hi!"},
      {"no name", "\nbegin 644\n#:&DA\n`\nend\n", "[ATTACH.UUE|ATTACH.UUE] hi!"},
      {"empty file", "\nbegin 644 a.txt\n\nend\n", "[a.txt|a.txt] "},
      {"words in capitals", "\nbegin 644 words\nLIKE THESE\n\nMORE\n",
       "begin 644 words\r\nLIKE THESE\r\n\r\nMORE\r\n"},
      {"words in capitals behind data", "\nbegin 644 a.txt\n#:&DA\nBEST REGARDS\nAnn",
       "BEST REGARDS\r\nAnn\r\n[a.txt|a.txt] hi!"},
      {"zeros that a mail system took away", "\nbegin 644 a.txt\n&:&DA\n#:&DA\n#\n\nend\n",
       "[a.txt|a.txt] hi!\0\0\0hi!\0\0\0"sv},
      {"a word of base64 letters", "\nbegin-base64 644 words\nHello\nAnn Lee",
       "begin-base64 644 words\r\nHello\r\nAnn Lee\r\n"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, Split(test.message)) << test.what;
  settings_.suppressAttachments = true;
  EXPECT_EQ("before\r\nafter\r\n", Split(kCases[0].message));
}

TEST_F(MessageSplitterTest, UuencodedPartsAreDecodedAndLoseNothing) {
  const std::string uu = "begin 644 q.gif\n#:&DA\n`\nend\n";
  const std::string encoding = "Content-Transfer-Encoding: x-uuencode\n";
  const std::string named = "Content-Type: image/gif; name=p.gif\n";
  const std::string unnamed = "Content-Type: image/gif\n";
  const struct {
    const char* what;
    std::string message;
    const char* expected;
  } kCases[] = {
      {"declared", named + encoding + "\n" + uu, "[p.gif|p.gif] hi!"},
      {"without a name", unnamed + encoding + "\n" + uu, "[q.gif|q.gif] hi!"},
      {"without any name", unnamed + encoding + "\nbegin 644\n#:&DA\n`\nend\n",
       "[ATTACH.UUE|ATTACH.UUE] hi!"},
      {"two files", named + encoding + "\n" + uu + "\nbegin 600 r.txt\n#:&DA\n`\nend\n",
       "[p.gif|p.gif] hi![r.txt|r.txt] hi!"},
      {"text around the data", named + encoding + "\none\n" + uu + "two\n",
       "[p.gif|p.gif] hi![NONAME.TXT|NONAME.TXT] one\r\ntwo\r\n"},
      {"no data", named + encoding + "\nonly\nwords\n", "[p.gif|p.gif] only\r\nwords\r\n"},
      {"nothing", named + encoding + "\n", "[p.gif|p.gif] "},
      {"not declared", named + "\n\n" + uu, "[p.gif|p.gif] hi!"},
      {"not declared, a text file", "Content-Disposition: attachment\n\n" + uu,
       "[q.gif|q.gif] hi!"},
      {"not declared, words first", named + "\none\n" + uu,
       "[p.gif|p.gif] one\r\nbegin 644 q.gif\r\n#:&DA\r\n`\r\nend\r\n"},
      {"a message in the message", "Content-Type: message/rfc822\n\n" + uu,
       "[NONAME.EML|NONAME.EML] begin 644 q.gif\r\n#:&DA\r\n`\r\nend\r\n"},
  };
  for (const auto& test : kCases) EXPECT_EQ(test.expected, Split(test.message)) << test.what;
}

TEST_F(MessageSplitterTest, WhatIsSuppressedIsNotWritten) {
  const auto message = Multipart(
      "mixed",
      {Multipart("alternative",
                 {"Content-Type: text/plain\n\nhi", "Content-Type: text/html\n\n<b>"}, "a"),
       "Content-Type: image/png\n\nx"});
  settings_.suppressAlternatives = true;
  EXPECT_EQ("hi[NONAME.PNG|NONAME.PNG] x", Split(message));
  const std::string page = "Content-Type: text/html\n\n<b>";
  const std::string enriched = "Content-Type: text/enriched\n\ne";
  EXPECT_EQ("<b>", Split(Multipart("alternative", {page, enriched})));
  EXPECT_EQ("hi", Split(Multipart("alternative", {page, "\nhi", enriched})));
  EXPECT_EQ("hi\r\n<b>\r\nbye",
            Split(Multipart("mixed", {"\nhi", Multipart("alternative", {page}, "a"), "\nbye"})));
  settings_.maximumBodyBytes = 2;
  EXPECT_NE(std::string::npos, Split(Multipart("alternative", {page, "\nhi"})).find("<b>\r\nhi"));
  settings_.maximumBodyBytes = SplitSettings().maximumBodyBytes;
  const auto named = Multipart("alternative", {"\nhi", "Content-Type: text/html; name=n.htm\n\n<b>",
                                               "Content-Type: text/html\n\n<i>"});
  EXPECT_EQ("hi[n.htm|n.htm] <b>", Split(named));
  settings_.suppressAttachments = true;
  EXPECT_EQ("hi", Split(message));
  EXPECT_EQ("hi", Split(named));
}

TEST_F(MessageSplitterTest, FileNamesComeInEveryForm) {
  const std::pair<const char*, const char*> kCases[] = {
      {"name=plain.txt", "plain.txt"},
      {"name=\"with; semicolon.txt\"", "with; semicolon.txt"},
      {"name=\"quo\\\"ted.txt\"", "quo\"ted.txt"},
      {"name=\"C:\\dir\\file.txt\"", "file.txt"},
      {"name=two words.txt; x=y", "two words.txt"},
      {"name= \" a.txt\"", " a.txt"},
      {"name=\"  \"", "NONAME.DAT"},
      {"name=report (1).txt", "report (1).txt"},
      {"name=a.txt (a comment)", "a.txt"},
      {"(comment) name = a.txt", "a.txt"},
      {"name=\"unclosed.txt", "unclosed.txt"},
      {"name*=utf-8'de'%C3%A4.txt", "\xC3\xA4.txt"},
      {"name*=iso-8859-1''%E4.txt; name=other.txt", "\xC3\xA4.txt"},
      {"name*0=\"one \"; name*1=two; name*2*=%2Etxt", "one two.txt"},
      {"name*1*=%C3%A4.txt; name*0*=utf-8''a", "a\xC3\xA4.txt"},
      {"name*0=a.txt; name*2=lost", "a.txt"},
      {"name=\"=?utf-8?B?w6QudHh0?=\"", "\xC3\xA4.txt"},
      {"name==?iso-8859-1?Q?=E4_b.txt?=", "\xC3\xA4 b.txt"},
      {"name=\"=?utf-8?Q?a?=  =?utf-8?Q?b.txt?=\"", "ab.txt"},
      {"name=\"=?gb2312?B?xOO6wy50eHQ=?=\"", "你好.txt"},
      {"name=\"=?utf-8?Q?=C3?= =?utf-8?Q?=A4.txt?=\"", "\xC3\xA4.txt"},
      {"name*=koi8-r''%F0%D2.txt", "Пр.txt"},
      {"name*0*=shift_jis''%93; name*1*=%FA.txt", "日.txt"},
      {"name=\"\xC3\xA4.txt\"", "\xC3\xA4.txt"},
      {"name=\"\xE4.txt\"", "\xC3\xA4.txt"},
      {"name=\"=?utf-8?X?a?=.txt\"", "=?utf-8?X?a?=.txt"},
      {"name=\"../../etc/passwd\"", "passwd"},
  };
  for (const auto& [parameter, expected] : kCases) {
    const auto text = Split("Content-Type: application/x-odd; " + std::string(parameter) + "\n\nx");
    const auto bar = text.find('|');
    ASSERT_NE(std::string::npos, bar) << parameter << ": " << text;
    EXPECT_EQ(expected, text.substr(bar + 1, text.find(']') - bar - 1)) << parameter;
  }
}

TEST_F(MessageSplitterTest, EachTextIsReadInItsOwnSet) {
  const std::string utf8 = "Content-Type: text/plain; charset=\"UTF-8\"\n\n\xC3\xA9";
  const std::string latin2 = "Content-Type: text/plain; charset=iso-8859-2\n\n\xB3";
  const std::string utf16 =
      "Content-Type: text/plain; charset=utf-16le\nContent-Transfer-Encoding: base64\n\n6QA=";
  const std::string lying = "Content-Type: text/html; charset=utf-8\n\n\xE9\xC3\xA9";
  const std::string flowed =
      "Content-Type: text/plain; charset=utf-8; format=flowed; delsp=yes\n\n\xC3\xA9 \n\xC3\xA9\nx";
  const struct {
    const char* what;
    std::string message;
    const char* expected;
  } kCases[] = {
      {"in pieces", "\naéééééééééééééééééééé", "aéééééééééééééééééééé\r\n"},
      {"named", utf8, "é\r\n"},
      {"unnamed", "\n\xC3\xA9", "é\r\n"},
      {"neither", "\n\xC3\xA9\xE9", "Ã©é\r\n"},
      {"marked", "\n\xEF\xBB\xBF\xC3\xA9", "é\r\n"},
      {"a lie", lying, "éÃ©\r\n"},
      {"one each", Multipart("mixed", {latin2, utf16, "\n\xE9", utf8, flowed}),
       "ł\r\né\r\né\r\né\r\néé\r\nx"},
      {"a rendering", Multipart("alternative", {lying, utf8}),
       "é[ALTERNAT.HTM|ALTERNAT.HTM] \xE9\xC3\xA9"},
      {"without parts", "Content-Type: multipart/mixed; boundary=b\n\n\xC3\xA9", "é\r\n"},
      {"flowed as HTML", "Content-Type: text/html; format=flowed\n\na \nb", "a \r\nb\r\n"},
      {"files stay bytes",
       Multipart("mixed",
                 {utf8, "Content-Type: text/plain; charset=utf-8; name=a.txt\n\n\xC3\xA9"}),
       "é[a.txt|a.txt] \xC3\xA9"},
  };
  for (const auto& test : kCases) {
    for (const auto pieceSize : {kWhole, std::size_t{30}}) {
      EXPECT_EQ(test.expected, Split(test.message, pieceSize)) << test.what;
    }
  }
  settings_.suppressAlternatives = true;
  EXPECT_EQ(
      "é", Split(Multipart("alternative", {"Content-Type: text/html; charset=utf-8\n\n\xC3\xA9"})));
  settings_.headersInBody = true;
  EXPECT_EQ("X: \xC3\xA9\r\n\r\né\r\n", Split("X: \xC3\xA9\n\n\xE9"));
  settings_.rawHeaders = true;
  EXPECT_EQ("X: Ã©\r\n\r\né\r\n", Split("X: \xC3\xA9\n\n\xC3\xA9"));
  settings_.headersInBody = false;
  settings_.maximumBodyBytes = 3;
  EXPECT_EQ(
      "{Message too long, appended as first attachment.}[MESSAGE.TXT|MESSAGE.TXT] \xE9\r\n\xC3\xA9",
      Split(Multipart("mixed", {"\n\xE9", utf8})));
}

TEST_F(MessageSplitterTest, FilesKeepTheirLabels) {
  const auto* const uu = "begin 644 u.txt\n#;VYE\n`\nend\n";
  Split(
      Multipart("mixed", {"Content-Type: IMAGE/Png; name=a\nContent-ID:\t<a@b> \n\n",
                          "Content-Type: application/pdf (a comment)\nContent-ID: no brackets\n\n",
                          "Content-Disposition: attachment\nContent-ID: c\n\n",
                          "Content-Type: a/" + std::string(300, 'b') + "\n\n",
                          std::string("Content-Type: image/gif\nContent-ID: <d>\n\n") + uu}));
  EXPECT_EQ("[image/png|a@b][application/pdf|][|c][|][|]", labels_);
}

TEST_F(MessageSplitterTest, TheFirstHtmlIsKept) {
  const std::string plain = "Content-Type: text/plain\n\nhi";
  const std::string html = "Content-Type: text/html; charset=utf-8\n\n<b>\xC3\xA9</b>";
  const std::string image = "Content-Type: image/png\n\nUERG";
  const auto page = Multipart("related", {html, image}, "r");
  const struct {
    const char* what;
    std::string message;
    std::string html;
    const char* text;    // by the way
    const char* asText;  // where HTML becomes text
  } kCases[] = {
      {"alone", html, "<b>\u00E9</b>", "<b>\u00E9</b>\r\n", "\u00E9"},
      {"plain", plain, "", "hi\r\n", "hi\r\n"},
      {"alternative", Multipart("alternative", {plain, page}), "<b>\u00E9</b>",
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>[NONAME.PNG|NONAME.PNG] UERG",
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>[NONAME.PNG|NONAME.PNG] UERG"},
      {"alternative without a plain one, and what follows",
       Multipart("mixed", {Multipart("alternative", {html, html}, "a"), plain}), "<b>\u00E9</b>",
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>[ALTERNA1.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>",
       "\u00E9\r\nhi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>"
       "[ALTERNA1.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>"},
      {"HTML first", Multipart("alternative", {html, plain}), "<b>\u00E9</b>",
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>",
       "hi[ALTERNAT.HTM|ALTERNAT.HTM] <b>\xC3\xA9</b>"},
      {"between texts", Multipart("mixed", {html, plain}), "<b>\u00E9</b>", "<b>\u00E9</b>\r\nhi",
       "\u00E9\r\nhi"},
      {"files are none",
       Multipart("mixed", {"Content-Type: text/html; name=a.htm\n\n<i>", plain,
                           "Content-Type: text/html\nContent-Disposition: attachment\n\n<i>"}),
       "", "hi[a.htm|a.htm] <i>[NONAME.HTM|NONAME.HTM] <i>",
       "hi[a.htm|a.htm] <i>[NONAME.HTM|NONAME.HTM] <i>"},
      {"its own word for the set", "Content-Type: text/html\n\n<meta charset=koi8-r>\xC1",
       "<meta charset=koi8-r>\u0430\r\n", "<meta charset=koi8-r>\u00C1\r\n", "\u0430"},
  };
  for (const auto& test : kCases) {
    settings_.htmlAsText = false;
    EXPECT_EQ(test.text, Split(test.message)) << test.what;
    EXPECT_EQ(test.html, std::string(Trim(html_)).substr(0, test.html.size())) << test.what;
    EXPECT_EQ(test.html.empty(), html_.empty()) << test.what;
    settings_.htmlAsText = true;
    EXPECT_EQ(test.asText, Split(test.message)) << test.what;
  }
  settings_.suppressAttachments = true;
  EXPECT_EQ("\u00E9", Split(Multipart("alternative", {page})));
  EXPECT_EQ("hi", Split(Multipart("alternative", {plain, page})));
  EXPECT_EQ("<b>\u00E9</b>", html_);
  settings_.headersInBody = true;
  EXPECT_NE(std::string::npos, Split(html).find("charset=utf-8\r\n\r\n\u00E9"));
}

TEST_F(MessageSplitterTest, HtmlThatIsTooLongStaysWhatItWas) {
  settings_.maximumBodyBytes = 10;
  settings_.htmlAsText = true;
  const auto html = std::string("Content-Type: text/html\n\n<p>0123456789");
  EXPECT_EQ(
      "{Message too long, appended as first attachment.}"
      "[MESSAGE.TXT|MESSAGE.TXT] <p>0123456789\r\n",
      Split(html));
  EXPECT_EQ("", html_);
  EXPECT_EQ("[ALTERNAT.HTM|ALTERNAT.HTM] <p>0123456789", Split(Multipart("alternative", {html})));
}

TEST_F(MessageSplitterTest, ANameTooLongForTheSystemIsCut) {
  const std::string base(300, 'b');
  const std::string extension(300, 'e');
  EXPECT_EQ("[" + base.substr(0, 50) + "." + extension.substr(0, 10) + "|" + base + "." +
                extension + "] x\r\n",
            Split("Content-Type: image/png; name=" + base + "." + extension + "\n\nx"));
}

TEST_F(MessageSplitterTest, ALongBodyBecomesTheFirstAttachment) {
  settings_.maximumBodyBytes = 10;
  const auto message =
      Multipart("mixed", {"\nshort", "Content-Type: image/png\n\nx", "\nand much longer"});
  EXPECT_EQ(
      "{Message too long, appended as first attachment.}[MESSAGE.TXT|MESSAGE.TXT] short\r\nand "
      "much "
      "longer[NONAME.PNG|NONAME.PNG] x",
      Split(message));
}

TEST_F(MessageSplitterTest, LimitsKeepTheRestAsContent) {
  std::string nested;
  for (std::size_t i = 0; i < 100; ++i) {
    const auto boundary = "b" + std::to_string(i);
    nested += "Content-Type: multipart/mixed; boundary=" + boundary + "\n\n--" + boundary + "\n";
  }
  const auto deep = Split(nested + "\nthe core");
  EXPECT_NE(std::string::npos, deep.find("the core"));
  EXPECT_NE(std::string::npos, deep.find("boundary=b99"));

  std::string many = "Content-Type: multipart/mixed; boundary=b\n\n";
  for (std::size_t i = 0; i < MessageSplitter::kMaximumParts + 10; ++i) many += "--b\n\nx\n";
  const auto parts = Split(many);
  EXPECT_NE(std::string::npos, parts.find("[NONAME.DAT|NONAME.DAT] \r\nx\r\n--b\r\n\r\nx"));
}

TEST_F(MessageSplitterTest, NothingStaysOfAMessageThatDoesNotEnd) {
  TempFolder folder;
  settings_.directory = folder.Path();
  const std::string message = "Content-Type: image/png; name=a.png\n\n" + std::string(100000, 'x');
  {
    MessageSplitter splitter(*files_, {*codePage_, *sets_}, settings_);
    EXPECT_TRUE(Feed(splitter, message, 1000));
    EXPECT_EQ(1U, folder.Names().size());
  }
  EXPECT_TRUE(folder.Names().empty());

  settings_.directory = folder.Path("missing");
  EXPECT_EQ(false, [&] {
    MessageSplitter splitter(*files_, {*codePage_, *sets_}, settings_);
    return Feed(splitter, message, 1000);
  }());
}

}  // namespace
}  // namespace quillon
