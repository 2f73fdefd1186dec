#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codec/MessageSplitter.h"
#include "codec/RtfCompressed.h"
#include "codec/RtfText.h"
#include "codec/Tnef.h"
#include "platform/Platform.h"
#include "ports/CharacterSets.h"
#include "ports/CodePage.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ContentOf;
using testing::TempFolder;

std::string LowFirst(std::uint64_t number, unsigned size) {
  std::string bytes;
  for (; size > 0; --size, number >>= 8U) bytes += static_cast<char>(number & 0xFFU);
  return bytes;
}

std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += LowFirst(unit, 2);
  return bytes;
}

// Values as MAPI has them.
std::string Sized(std::string_view value) {
  auto bytes = LowFirst(value.size(), 4).append(value);
  return bytes.append((4 - value.size() % 4) % 4, '\0');
}
std::string Property(std::uint32_t tag, std::string_view value) {
  return LowFirst(tag & 0xFFFFU, 2) + LowFirst(tag >> 16U, 2) + LowFirst(1, 4) + Sized(value);
}
std::string Properties(const std::vector<std::string>& each) {
  auto bytes = LowFirst(each.size(), 4);
  for (const auto& property : each) bytes += property;
  return bytes;
}

std::string Attribute(std::uint8_t level, std::uint32_t id, std::string_view data,
                      unsigned wrong = 0) {
  unsigned sum = wrong;
  for (const char c : data) sum += static_cast<unsigned char>(c);
  return LowFirst(level, 1) + LowFirst(id, 4) + LowFirst(data.size(), 4).append(data) +
         LowFirst(sum & 0xFFFFU, 2);
}

constexpr std::uint32_t kOemCodePage = 0x00069007;
constexpr std::uint32_t kMessageClass = 0x00078008;
constexpr std::uint32_t kMessageProperties = 0x00069003;
constexpr std::uint32_t kRenderData = 0x00069002;
constexpr std::uint32_t kTitle = 0x00018010;
constexpr std::uint32_t kData = 0x0006800F;
constexpr std::uint32_t kAttachment = 0x00069005;

std::string Start() {
  return LowFirst(0x223E9F78, 4) + LowFirst(7, 2);
}
std::string Latin() {
  return Attribute(1, kOemCodePage, LowFirst(1252, 4) + LowFirst(0, 4));
}
std::string Note() {
  return Attribute(1, kMessageClass, "IPM.Microsoft Mail.Note\0"sv);
}

std::string OfMessage(const std::vector<std::string>& properties) {
  return Attribute(1, kMessageProperties, Properties(properties));
}
std::string Attached(std::string_view title, std::string_view data,
                     const std::vector<std::string>& properties = {}) {
  auto bytes = Attribute(2, kRenderData, std::string(14, '\0')) +
               Attribute(2, kTitle, std::string(title) + '\0') + Attribute(2, kData, data);
  return properties.empty() ? bytes : bytes + Attribute(2, kAttachment, Properties(properties));
}
std::string AttachedMessage(std::string_view title, std::string_view message) {
  const auto object = "\x07\x03\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"s.append(message);
  return Attribute(2, kRenderData, std::string(14, '\0')) +
         Attribute(2, kTitle, std::string(title) + '\0') +
         Attribute(2, kAttachment, Properties({Property(0x3701000D, object)}));
}

// The two examples of [MS-OXRTFCP].
constexpr std::string_view kHello(
    "\x2D\0\0\0\x2B\0\0\0LZFu\xF1\xC5\xC7\xA7\x03\0\x0A\0rcpg125\x42"
    "2\x0A\xF3\x20hel\x09\0\x20"
    "bw\x05\xB0ld}\x0A\x80\x0F\xA0",
    49);
constexpr std::string_view kRepeated(
    "\x1A\0\0\0\x1C\0\0\0LZFu\xE2\xD4\x4BQ\x41\0\x04\x20WXYZ\x0Dn}\x01\x0E\xB0", 30);

class Collected final : public ByteSink {
 public:
  void Append(std::string_view bytes) override { text += bytes; }
  std::string text;
};

class TnefTest : public ::testing::Test {
 protected:
  TnefTest() { settings_.expandTnef = true; }

  // The text of a message that has these bytes as its part, and each file as "[name] content".
  std::string Open(const std::string& bytes, std::string_view header = "",
                   std::string_view before = "") {
    TempFolder folder;
    settings_.directory = folder.Path();
    MessageSplitter splitter(*files_, reader_, settings_);
    splitter.Line("Content-Type: multipart/mixed; boundary=b", true);
    splitter.Line("", true);
    if (!before.empty()) {
      for (const auto line : {"--b"sv, ""sv, before}) splitter.Line(line, true);
    }
    splitter.Line("--b", true);
    splitter.Line(
        header.empty() ? "Content-Type: application/ms-tnef; name=\"winmail.dat\"" : header, true);
    splitter.Line("Content-Transfer-Encoding: quoted-printable", true);
    splitter.Line("", true);
    for (std::size_t i = 0; i < bytes.size(); i += 20) {
      std::string line;
      for (const char c : bytes.substr(i, 20)) {
        constexpr std::string_view kDigits = "0123456789ABCDEF";
        const auto byte = static_cast<unsigned char>(c);
        line.append({'=', kDigits[byte / 16], kDigits[byte % 16]});
      }
      splitter.Line(line + "=", true);
    }
    splitter.Line("", true);
    splitter.Line("--b--", true);
    SplitMessage split;
    if (!splitter.Finish(split)) return "failed";
    auto text = split.body;
    for (const auto& attachment : split.attachments) {
      const auto content = ContentOf(*files_, attachment.file);
      text += "[" + attachment.displayName + "] " + (content == bytes ? "same"s : content);
    }
    EXPECT_EQ(split.attachments.size(), folder.Names().size());
    return text;
  }

  std::string Decompress(std::string_view bytes, bool& isWhole) {
    const TempFolder folder;
    EXPECT_TRUE(WriteWholeFile(*files_, folder.Path("rtf"), testing::BytesOf(bytes)));
    const auto file = files_->Open(folder.Path("rtf"), OpenMode::kRead);
    FileBlocks blocks(*file);
    Collected rtf;
    isWhole = DecompressRtf(FileBytes(blocks), rtf);
    return rtf.text;
  }

  std::string TextOf(std::string_view rtf) {
    Collected whole;
    RtfText text(reader_, whole);
    text.Append(rtf);
    text.Finish();
    Collected pieces;  // nothing depends on where one ends
    RtfText inPieces(reader_, pieces);
    for (std::size_t i = 0; i < rtf.size(); ++i) inPieces.Append(rtf.substr(i, 1));
    inPieces.Finish();
    EXPECT_EQ(whole.text, pieces.text);
    return whole.text;
  }

  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
  TextReader reader_{*codePage_, *sets_};
  SplitSettings settings_;
};

TEST_F(TnefTest, IsReplacedByWhatItHolds) {
  const auto named = Attached(
      "LONGNA~1.TXT", "short",
      {Property(0x3001001E, "shown\0"sv), Property(0x3707001F, Utf16(u"Größe Ω.txt\0"sv))});
  const auto plain = Start() + Latin() + Note() + Attached("M\xFCller.txt", "data") + named;
  EXPECT_EQ("[Müller.txt] data[Größe Ω.txt] short", Open(plain));
  settings_.expandTnef = false;
  EXPECT_EQ("[winmail.dat] same", Open(plain));
  settings_.expandTnef = true;
  for (const auto* const header :
       {"Content-Type: application/vnd.ms-tnef", "Content-Type: a/b; name=WinMail.dat"}) {
    EXPECT_EQ("[Müller.txt] data[Größe Ω.txt] short", Open(plain, header)) << header;
  }
  EXPECT_EQ("[tnef.bin] same", Open(plain, "Content-Type: a/b; name=tnef.bin"));
  EXPECT_EQ("[OLE.bin] storage",
            Open(Start() + Attached("OLE.bin", "unused",
                                    {Property(0x3701000D, std::string(16, 'i') + "storage")})));
}

TEST_F(TnefTest, ItsTextIsThatOfAMessageWithoutOne) {
  const auto unicode = Property(0x1000001F, Utf16(u"Σ and \U0001F4E7\0"sv));
  const auto bytes = Property(0x1000001E, "\xFCmlaut\0"sv);
  const auto rich = Property(0x10090102, kHello);
  const auto html = Property(0x10130102, "<b>\xE9</b>");
  const auto page = LowFirst(3, 2) + LowFirst(0x3FDE, 2) + LowFirst(1252, 4);
  settings_.suppressAlternatives = true;
  EXPECT_EQ("Σ and \U0001F4E7", Open(Start() + Latin() + OfMessage({bytes, rich, html, unicode})));
  EXPECT_EQ("ümlaut", Open(Start() + Latin() + OfMessage({html, bytes, rich})));
  EXPECT_EQ("ümlaut", Open(Start() + Latin() + Attribute(1, 0x0002800C, "\xFCmlaut\0"sv)));
  EXPECT_EQ("hello world", Open(Start() + OfMessage({html, rich})));
  EXPECT_EQ("<b>é</b>", Open(Start() + OfMessage({page, html})));
  EXPECT_EQ("own", Open(Start() + OfMessage({unicode}), "", "own"));
  EXPECT_EQ(" \r\nΣ and \U0001F4E7", Open(Start() + OfMessage({unicode}), "", " "));
  settings_.suppressAlternatives = false;
  EXPECT_EQ("own[ALTERNAT.TXT] \xEF\xBB\xBFΣ and \U0001F4E7",
            Open(Start() + OfMessage({unicode}), "", "own"));
  EXPECT_EQ(
      "own[ALTERNAT.HTM] <b>\xE9</b>[ALTERNAT.RTF] "
      "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n",
      Open(Start() + OfMessage({unicode, rich, html}), "", "own"));
}

// Everything that there may be in front of what counts.
TEST_F(TnefTest, OtherPropertiesAreSkipped) {
  const auto tag = [](unsigned type, unsigned id) { return LowFirst(type, 2) + LowFirst(id, 2); };
  const auto guid = std::string(16, 'g');
  EXPECT_EQ("text",
            Open(Start() +
                 OfMessage({
                     tag(2, 1) + LowFirst(5, 4),
                     tag(0x40, 0x39) + LowFirst(0, 8),
                     tag(0x48, 2) + guid,
                     tag(0x1003, 3) + LowFirst(2, 4) + LowFirst(1, 8),
                     tag(0x101F, 4) + LowFirst(2, 4) + Sized("abc") + Sized("de"),
                     tag(0x0B, 0x8001) + guid + LowFirst(0, 4) + LowFirst(9, 4) + LowFirst(1, 4),
                     tag(0x1E, 0x8002) + guid + LowFirst(1, 4) + Sized(Utf16(u"Keywords\0"sv)) +
                         LowFirst(1, 4) + Sized("x"),
                     Property(0x1000001E, "text"),
                 })));
}

TEST_F(TnefTest, AMessageInItIsOpenedBehindItsFile) {
  const auto inner = Start() + Note() + OfMessage({Property(0x1000001F, Utf16(u"ä"))}) +
                     Attached("inner.txt", "data");
  EXPECT_EQ("[Re_ 1_2.DAT] " + inner + "[Re_ 1_2.TXT] \xEF\xBB\xBFä[inner.txt] data",
            Open(Start() + AttachedMessage("Re: 1.2", inner)));
  auto nested = Start();
  std::string names;
  for (int i = 0; i < 8; ++i) nested = Start() + AttachedMessage("m", nested);
  const auto opened = Open(nested);
  for (std::size_t i = opened.find("[m.DAT]"); i != std::string::npos;
       i = opened.find("[m.DAT]", i + 1)) {
    names += "m";
  }
  EXPECT_EQ("mmmm", names);
}

// What cannot be read whole is listed as it came, too.
TEST_F(TnefTest, WhatIsNotOpenedWholeStaysBesideWhatIs) {
  const auto file = Attached("a.txt", "data");
  const auto empty = Attribute(2, kRenderData, "") + Attribute(2, kTitle, "b.txt");
  const auto many = LowFirst(0x1003, 2) + LowFirst(1, 2) + LowFirst(0xFFFFFFFF, 4);
  auto changed = std::string(kHello);
  changed[20] ^= 1;
  const std::pair<std::string, std::string> kCases[] = {
      {Start() + file + Attribute(1, 0x00069005, "", 1), "[winmail.dat] same[a.txt] data"},
      {Start() + file + file.substr(0, file.size() - 4), "[winmail.dat] same[a.txt] data"},
      {Start() + file + "\x03", "[winmail.dat] same[a.txt] data"},
      {Start() + "\x01\x02\x80\x06"s + std::string(5, '\xFF'), "[winmail.dat] same"},
      {Start() + empty + file, "[winmail.dat] same[a.txt] data"},
      {Start() + Attribute(1, kMessageClass, "IPM.Microsoft Schedule.MtgReq\0"sv) + file,
       "[winmail.dat] same[a.txt] data"},
      {Start() + OfMessage({Property(0x001A001E, "IPM.Contact")}) + file,
       "[winmail.dat] same[a.txt] data"},
      {Start() + OfMessage({many}) + file, "[winmail.dat] same[a.txt] data"},
      {Start() + OfMessage({LowFirst(0x0999, 4)}) + file, "[winmail.dat] same[a.txt] data"},
      {Start() + Attribute(1, kMessageProperties, LowFirst(0xFFFFFFFF, 4)) + file,
       "[winmail.dat] same[a.txt] data"},
      {Start().substr(0, 5), "[winmail.dat] same"},
      {"no such file at all", "[winmail.dat] same"},
      {"", "[winmail.dat] same"},
  };
  for (const auto& [bytes, expected] : kCases) EXPECT_EQ(expected, Open(bytes));
  settings_.suppressAlternatives = true;
  EXPECT_NE(std::string::npos,
            Open(Start() + OfMessage({Property(0x10090102, changed)})).find("[winmail.dat] same"));
}

TEST_F(TnefTest, RichTextIsDecompressed) {
  bool isWhole = false;
  EXPECT_EQ("{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n", Decompress(kHello, isWhole));
  EXPECT_TRUE(isWhole);
  EXPECT_EQ("{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}", Decompress(kRepeated, isWhole));
  EXPECT_TRUE(isWhole);
  const auto stored = LowFirst(16, 4) + LowFirst(4, 4) + "MELA" + LowFirst(0, 4) + "text";
  EXPECT_EQ("text", Decompress(stored + "more", isWhole));
  EXPECT_TRUE(isWhole);
  for (std::size_t size = 0; size < kHello.size(); ++size) {
    Decompress(kHello.substr(0, size), isWhole);
    EXPECT_FALSE(isWhole) << size;
  }
  EXPECT_EQ("tex", Decompress(stored.substr(0, stored.size() - 1), isWhole));
  EXPECT_FALSE(isWhole);
}

TEST_F(TnefTest, RichTextReadsAsItsText) {
  const std::pair<std::string, std::string_view> kCases[] = {
      {R"({\rtf1\ansi{\fonttbl{\f0\fswiss Arial;}{\f1 Times;}}{\colortbl;\red0;}\pard a\par b\tab c\line})",
       "a\r\nb\tc\r\n"},
      {R"({\rtf1\ansi\ansicpg1251 \'cf\'f0\'e8 \{\\\}})", "При {\\}"},
      {R"({\rtf1{\fonttbl{\f0\fcharset0 A;}{\f3\fcharset128 B;}}\f3\'93\'fa\'83\'5c\f0\'e9})",
       "日ソé"},
      {R"({\rtf1\uc1 \u931 ?\u-10179\'3f\u-8704?{\uc2\u233\'65\'65}\uc0\u8364})", "Σ\U0001F600é€"},
      {R"({\rtf1 a{\*\htmltag <p>}{\htmlrtf\par\htmlrtf0}b{\pict\bin5 }}}\\ 00ff}c{\info{\title T}}})",
       "a\r\nbc"},
      {"{\\rtf1 one\r\ntwo\\~\\-three\\_4\\emdash 5\\\n6}", "onetwo\u00A0three\u20114\u20145\r\n6"},
      {R"({\field{\*\fldinst{HYPERLINK "x"}}{\fldrslt link}}\'zq\bin-3 end)", "linkzqend"},
      {std::string(1001, '{') + "deep" + std::string(1001, '}') + "flat", "flat"},
      {"}}}text\\", "text"},
      {R"(\u99999999999999 ?\f-5 x)", "\uE100x"},
  };
  for (const auto& [rtf, text] : kCases) EXPECT_EQ(text, TextOf(rtf)) << rtf.substr(0, 99);
}

}  // namespace
}  // namespace quillon
