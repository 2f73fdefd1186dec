#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

#include "codec/UUCode.h"
#include "core/WholeFile.h"
#include "platform/Platform.h"
#include "support/FaultyFileSystem.h"
#include "support/TempFolder.h"

namespace quillon {
namespace {

using testing::BytesOf;
using testing::ContentOf;
using testing::FaultyFileSystem;
using testing::TempFolder;
using testing::TextOf;

// Bytes of every value, the same in each run.
std::string SomeBytes(size_t size) {
  std::mt19937 random(static_cast<unsigned>(size));
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() & 255);
  return bytes;
}

std::string Replaced(std::string text, std::string_view what, std::string_view with) {
  for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

class UUCodeTest : public ::testing::Test {
 protected:
  using FileOperation = void (UUCode::*)(const std::string&, const std::string&, ShortBool&);

  std::string Write(std::string_view name, std::string_view content) {
    std::string path = folder_.Path(name);
    EXPECT_TRUE(WriteWholeFile(faulty_, path, BytesOf(content)));
    return path;
  }

  std::string Read(std::string_view name) { return ContentOf(*files_, folder_.Path(name)); }

  // What the operation makes of a file with this content.
  std::string Run(FileOperation operation, std::string_view content, ShortBool expected = kTrue) {
    const std::string input = Write("Input File.Bin", content);
    ShortBool result = 7;
    (codec_.*operation)(input, folder_.Path("out"), result);
    EXPECT_EQ(result, expected);
    return Read("out");
  }

  std::string RoundTrip(FileOperation encode, FileOperation decode, std::string_view content) {
    return Run(decode, Run(encode, content));
  }

  std::string Encode(std::string_view content, int16_t style) {
    ShortBool result = kFalse;
    codec_.UUEncodeFile(Write("Input File.Bin", content), folder_.Path("out"), style, result);
    EXPECT_EQ(result, kTrue);
    return Read("out");
  }

  TempFolder folder_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  FaultyFileSystem faulty_{*files_};
  UUCode codec_{faulty_};
};

TEST_F(UUCodeTest, BothFramings) {
  EXPECT_EQ(Encode("Cat", UUCode::kGraveAccentStyle),
            "begin 644 input file.bin\r\n#0V%T\r\n`\r\nend\r\n");
  EXPECT_EQ(Encode("Cat", 0), "begin 644 input file.bin\r\n#0V%T\r\n\r\nend\r\n");
  EXPECT_EQ(Encode("", UUCode::kGraveAccentStyle), "begin 644 input file.bin\r\n`\r\nend\r\n");
  EXPECT_EQ(Run(&UUCode::UUEncodeFile2, "Cat"), Encode("Cat", UUCode::kGraveAccentStyle));
}

TEST_F(UUCodeTest, LinesOf45BytesAndTheFillingOfTheLast) {
  const std::string zeros(45, '\0');
  const std::string fullLine = "M" + std::string(60, '`') + "\r\n";
  EXPECT_EQ(Encode(zeros, 0), "begin 644 input file.bin\r\n" + fullLine + "\r\nend\r\n");
  // 46: the two filling bytes are copies of the last two data bytes, here 0 and "a".
  EXPECT_EQ(Encode(zeros + "a", 0),
            "begin 644 input file.bin\r\n" + fullLine + "!80!A\r\n\r\nend\r\n");
  // A block of less than 3 bytes is filled with the byte 97: "aaa".
  EXPECT_EQ(Encode("a", 0), "begin 644 input file.bin\r\n!86%A\r\n\r\nend\r\n");
  const std::string block(1800, 'x');
  EXPECT_TRUE(Encode(block + "a", 0).ends_with("\r\n!86%A\r\n\r\nend\r\n"));
}

TEST_F(UUCodeTest, FilesComeBackWhateverTheirSize) {
  std::vector<size_t> sizes = {44, 45, 46, 57, 58, 1799, 1800, 1801, 187199, 187200, 700001};
  for (size_t size = 0; size < 8; ++size) sizes.push_back(size);
  for (const size_t size : sizes) {
    const std::string bytes = SomeBytes(size);
    EXPECT_EQ(RoundTrip(&UUCode::UUEncodeFile2, &UUCode::UUDecodeFile, bytes), bytes) << size;
    EXPECT_EQ(RoundTrip(&UUCode::Base64EncodeFile, &UUCode::Base64DecodeFile, bytes), bytes)
        << size;
    const std::string emptyLineFraming = Encode(bytes, 0);
    EXPECT_EQ(Run(&UUCode::UUDecodeFile, emptyLineFraming), bytes) << size;
  }
}

TEST_F(UUCodeTest, UuencodedDataAsSendersWriteIt) {
  const std::string data = "#0V%T\r\n`\r\nend\r\n";
  const struct {
    std::string text;
    std::string decoded;
  } cases[] = {
      {"begin 644 a.txt\r\n" + data, "Cat"},
      {"begin 0644 name with blanks.txt\r\n" + data, "Cat"},
      {"begin 644 a.txt\n#0V%T\n`\nend\n", "Cat"},
      {"begin 644 a.txt\r#0V%T\r`\rend\r", "Cat"},
      {"A letter first,\r\nto begin with.\r\n\r\nbegin 600 a\r\n" + data + "A signature", "Cat"},
      // A blank ends the data as well as a grave accent does in what it decodes to.
      {"begin 644 a\r\n#0V%T\r\n \r\nend\r\n", "Cat"},
      // Blanks at the end of lines, which mean 0, taken away by a mail system.
      {"begin 644 a\r\n&0V%T\r\n`\r\nend\r\n", std::string("Cat\0\0\0", 6)},
      {"begin 644 a\r\n#\r\n#0V%T\r\n`\r\nend\r\n", std::string("\0\0\0Cat", 6)},
      // A checksum character behind the data, no end.
      {"begin 644 a\r\n#0V%TX\r\n", "Cat"},
      {"begin 644 a\r\n#0V%T", "Cat"},
      {"begin-base64 644 a.bin\nQ2F0\nQ2F0\n====\nmore", "CatCat"},
      {"begin-base64 644 a.bin\r\nQ2E=\r\n====\r\n", "Ca"},
  };
  for (const auto& test : cases)
    EXPECT_EQ(Run(&UUCode::UUDecodeFile, test.text), test.decoded) << test.text;
}

TEST_F(UUCodeTest, EveryLineEndDecodesTheSame) {
  const std::string bytes = SomeBytes(600000);
  const std::string encoded = Encode(bytes, UUCode::kGraveAccentStyle);
  for (const std::string_view lineEnd : {"\r\n", "\n", "\r"}) {
    EXPECT_EQ(Run(&UUCode::UUDecodeFile, Replaced(encoded, "\r\n", lineEnd)), bytes);
  }
  // Blanks for grave accents, then none at the ends of lines: what some encoders and mail systems
  // make of it.
  std::string blanks =
      Replaced(Encode(std::string(5000, '\0'), UUCode::kGraveAccentStyle), "`", " ");
  for (int i = 0; i < 60; ++i) blanks = Replaced(blanks, " \r\n", "\r\n");
  EXPECT_EQ(Run(&UUCode::UUDecodeFile, blanks), std::string(5000, '\0'));
}

TEST_F(UUCodeTest, TextWithoutABeginLineIsDecodedByTheSecondDecoderOnly) {
  for (const std::string_view text : {"#0V%T\r\n`\r\nend\r\n", "To begin with,\r\nnothing.", ""}) {
    EXPECT_EQ(Run(&UUCode::UUDecodeFile, text, kFalse), "");
    EXPECT_FALSE(files_->FileExists(folder_.Path("out")));
  }
  EXPECT_EQ(Run(&UUCode::UUDecodeFile2, "#0V%T\r\n`\r\nend\r\n"), "Cat");
  EXPECT_EQ(Run(&UUCode::UUDecodeFile2, "Dear you\nbegin 644 x\n#0V%T\n`\nend\n"), "Cat");
}

TEST_F(UUCodeTest, HeaderInfo) {
  const std::string late = std::string(505, 'x') + "\n";
  const struct {
    std::string text;
    std::string mode;
    std::string name;
  } cases[] = {
      {"begin 644 Report.PDF\r\nM", "644", "Report.PDF"},
      {"begin 0755 two words.txt  \nM", "0755", "two words.txt"},
      {"begin 644 a\rM", "644", "a"},
      {"begin-base64 600 b\nM", "600", "b"},
      {"We begin now\nbegin 644 real\nM", "644", "real"},
      {"we begin 644 here\nM", "644", "here"},
      {"nothing of that kind", "", ""},
      {"begin \n", "", ""},
      {late + "begin 644 a\n", "", ""},
  };
  for (const auto& test : cases) {
    std::string mode = "?";
    std::string name = "?";
    ShortBool result = 7;
    codec_.GetHeaderInfo(Write("in", test.text), mode, name, result);
    EXPECT_EQ(mode, test.mode) << test.text;
    EXPECT_EQ(name, test.name) << test.text;
    EXPECT_EQ(result, ToShortBool(!test.mode.empty())) << test.text;
  }
}

TEST_F(UUCodeTest, DecodingOneLine) {
  const struct {
    std::string line;
    std::string decoded;
    ShortBool end;
  } cases[] = {
      {"#0V%T\r\n", "Cat", kFalse},
      {"\"0V%T", "Ca", kFalse},
      {"`", "", kTrue},
      {"", "", kFalse},
      // From a length of 63 on a line is not trimmed, and values use 7 bits.
      {"_" + std::string(84, '`'), std::string(63, '\0'), kFalse},
      {"a" + std::string(88, '`'), std::string(66, '\0'), kFalse},
      {"#aaaa", "\x04\x10\x41", kFalse},
  };
  for (const auto& test : cases) {
    UUCode::Bytes output = {1, 2, 3};
    ShortBool end = 7;
    ShortBool result = kFalse;
    codec_.DecodeStream(BytesOf(test.line), output, end, result);
    EXPECT_EQ(TextOf(output), test.decoded) << test.line;
    EXPECT_EQ(end, test.end) << test.line;
    EXPECT_EQ(result, kTrue);
  }
}

TEST_F(UUCodeTest, RecordsAreFedThroughInSeveralCalls) {
  const std::string text = "CatDog";
  UUCode::Bytes lines;
  UUCode::Bytes base64;
  UUCode::Bytes fromBase64;
  size_t in = 0;
  size_t out = 0;
  size_t in64 = 0;
  size_t out64 = 0;
  size_t inBack = 0;
  size_t outBack = 0;
  ShortBool result = kFalse;
  for (int i = 0; i < 2; ++i) {
    codec_.EncodeRec(BytesOf(text), lines, in, out, '#', result);
    EXPECT_EQ(result, kTrue);
    codec_.Base64EncodeRec(BytesOf(text), base64, in64, out64, 3, result);
    EXPECT_EQ(result, kTrue);
  }
  EXPECT_EQ(TextOf(lines), "0V%T1&]G");
  EXPECT_EQ(TextOf(base64), "Q2F0RG9n");
  codec_.EncodeRec(BytesOf(text), lines, in, out, '#', result);
  EXPECT_EQ(result, kFalse);

  codec_.Base64DecodeRec(base64, fromBase64, inBack, outBack, 4, result);
  codec_.Base64DecodeLastRec(BytesOf("Q2F0RA=="), fromBase64, inBack, outBack, result);
  EXPECT_EQ(TextOf(fromBase64), "CatD");
  EXPECT_EQ(inBack, 8U);

  UUCode::Bytes fromLines;
  size_t inUu = 0;
  size_t outUu = 0;
  codec_.DecodeRec(lines, fromLines, inUu, outUu, 3, result);
  codec_.DecodeRec(lines, fromLines, inUu, outUu, 2, result);
  EXPECT_EQ(TextOf(fromLines), "CatDog");

  UUCode::Bytes collected;
  ShortBool end = kFalse;
  codec_.UUDecodeRec("#0V%T", collected, end, result);
  codec_.UUDecodeRec("#1&]G", collected, end, result);
  EXPECT_EQ(end, kFalse);
  codec_.UUDecodeRec("end", collected, end, result);
  EXPECT_EQ(TextOf(collected), "CatDog");
  EXPECT_EQ(end, kTrue);
}

TEST_F(UUCodeTest, Base64LinesHave76Characters) {
  EXPECT_EQ(Run(&UUCode::Base64EncodeFile, "C"), "Qw==\r\n");
  EXPECT_EQ(Run(&UUCode::Base64EncodeFile, "Ca"), "Q2E=\r\n");
  EXPECT_EQ(Run(&UUCode::Base64EncodeFile, ""), "");
  const std::string line(57, '\0');
  EXPECT_EQ(Run(&UUCode::Base64EncodeFile, line + line + "C"),
            std::string(76, 'A') + "\r\n" + std::string(76, 'A') + "\r\nQw==\r\n");
}

TEST_F(UUCodeTest, Base64AsSendersWriteIt) {
  const struct {
    std::string text;
    std::string decoded;
  } cases[] = {
      {"Q2F0\r\n", "Cat"},
      {"  Q 2\tF\n0 \r", "Cat"},
      {"Q2F0RA", "CatD"},
      {"Q2F0RG8", "CatDo"},
      {"Q2F0R", "Cat"},
      // Files that were joined after they were encoded.
      {"Qw==\r\nQ2E=\r\nQ2F0\r\n", "CCaCat"},
      {"Qw==Q2E=Q2F0", "CCaCat"},
      {"====", ""},
      // A byte outside the alphabet is carried through with its own value, "!" as 33.
      {"!2F0", "\x87\x61\x74"},
      {"Q2F0\r\nQ2F0\r\nQ2F0Q2F0\r\n", "CatCatCatCat"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(Run(&UUCode::Base64DecodeFile, test.text), test.decoded) << test.text;
    UUCode::Bytes output;
    ShortBool result = kFalse;
    codec_.MIMEDecodeStream(BytesOf(test.text), output, result);
    EXPECT_EQ(TextOf(output), test.decoded) << test.text;
  }
}

TEST_F(UUCodeTest, Base64LinesOfEveryLengthAcrossBlocks) {
  const std::string bytes = SomeBytes(300001);
  const std::string joined = Replaced(Run(&UUCode::Base64EncodeFile, bytes), "\r\n", "");
  for (const size_t length : {1U, 4U, 61U, 64U, 75U, 76U, 200U, 400000U}) {
    std::string text;
    for (size_t at = 0; at < joined.size(); at += length) text += joined.substr(at, length) + "\n";
    EXPECT_EQ(Run(&UUCode::Base64DecodeFile, text), bytes) << length;
  }
}

TEST_F(UUCodeTest, QuotedPrintable) {
  const struct {
    std::string text;
    std::string decoded;
  } cases[] = {
      {"plain\r\ntext\r\n", "plain\r\ntext"},
      {"one=\r\n two", "one two"},
      {"one=  \t\ntwo", "onetwo"},
      {"blanks  \t\nkept=20 \nback", "blanks\r\nkept \r\nback"},
      {"=e4=F6=FC", "\xE4\xF6\xFC"},
      {"=3D41", "=41"},
      {"not =G1 = 41 =4 hex", "not =G1 = 41 =4 hex"},
      {"end=", "end"},
      {"end=4", "end=4"},
      {"a\n\n\nb", "a\r\n\r\n\r\nb"},
      {"a\rb\r", "a\r\nb"},
      {"\na", "\r\na"},
      {"", ""},
  };
  for (const auto& test : cases) {
    ShortBool pending = kFalse;
    ShortBool result = kFalse;
    codec_.QPDecodeFile(Write("in", test.text), folder_.Path("out"), pending, result);
    EXPECT_EQ(result, kTrue);
    EXPECT_EQ(Read("out"), test.decoded) << test.text;
  }
}

TEST_F(UUCodeTest, QuotedPrintableInSeveralFiles) {
  ShortBool pending = kFalse;
  ShortBool result = kFalse;
  std::string all;
  for (const std::string_view piece : {"one\r\n", "two=\r\n", "three\r\n"}) {
    codec_.QPDecodeFile(Write("in", piece), folder_.Path("out"), pending, result);
    all += Read("out");
  }
  EXPECT_EQ(all, "one\r\ntwothree");
  EXPECT_EQ(pending, kTrue);
}

TEST_F(UUCodeTest, QuotedPrintableLineLongerThanABlock) {
  // Every way in which the end of a block can fall into an escape, blanks or a soft break.
  for (size_t shift = 0; shift < 4; ++shift) {
    std::string text(256 * 1024 - shift, 'x');
    std::string decoded = text;
    text += "=41  y\t=\r\nz";
    decoded += "A  y\tz";
    ShortBool pending = kFalse;
    ShortBool result = kFalse;
    codec_.QPDecodeFile(Write("in", text), folder_.Path("out"), pending, result);
    EXPECT_EQ(Read("out") == decoded, true) << shift;
  }
  const std::string exactly(256 * 1024, 'x');
  EXPECT_EQ(exactly, [&] {
    ShortBool pending = kFalse;
    ShortBool result = kFalse;
    codec_.QPDecodeFile(Write("in", exactly), folder_.Path("out"), pending, result);
    EXPECT_EQ(pending, kTrue);
    return Read("out");
  }());
}

TEST_F(UUCodeTest, PartsAreNumberedWithAsManyDigitsAsTheirCountNeeds) {
  const struct {
    size_t size;
    size_t count;
    std::string first;
    std::string last;
  } cases[] = {
      {45, 1, "My Report.UUE", "My Report.UUE"},
      {46, 2, "My Report1.UUE", "My Report2.UUE"},
      {45 * 12, 12, "My Report01.UUE", "My Report12.UUE"},
      {45 * 119 + 1, 120, "My Report001.UUE", "My Report120.UUE"},
  };
  for (const auto& test : cases) {
    TempFolder output;
    const std::string bytes = SomeBytes(test.size);
    std::string directory = output.Path();
    ShortBool result = kFalse;
    codec_.UUEncodeFilesQLN(Write("My Report.tar.gz", bytes), directory, 125, result);
    EXPECT_EQ(result, kTrue);
    EXPECT_EQ(directory, output.Path() + files_->Separator());
    std::vector<std::string> names = output.Names();
    ASSERT_EQ(names.size(), test.count);
    EXPECT_EQ(names.front(), test.first);
    EXPECT_EQ(names.back(), test.last);
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    for (std::string& name : names) name = output.Path(name);
    codec_.UUDecodeFiles(names, folder_.Path("joined"), result);
    EXPECT_EQ(result, kTrue);
    EXPECT_EQ(Read("joined"), bytes);
  }
}

TEST_F(UUCodeTest, PartsThatDoNotFitTogetherAreRefused) {
  const std::string bytes = SomeBytes(200);
  std::string directory = folder_.Path();
  ShortBool result = kFalse;
  codec_.UUEncodeFiles(Write("a.bin", bytes), directory, 63, result);
  codec_.UUEncodeFiles(Write("b.bin", bytes), directory, 63, result);
  const auto parts = [&](const std::vector<std::string>& names) {
    std::vector<std::string> paths;
    paths.reserve(names.size());
    for (const auto& name : names) paths.push_back(folder_.Path(name + ".UUE"));
    ShortBool joined = 7;
    codec_.UUDecodeFiles(paths, folder_.Path("joined"), joined);
    EXPECT_EQ(files_->FileExists(folder_.Path("joined")), joined == kTrue);
    EXPECT_EQ(Read("joined"), joined == kTrue ? bytes : "");
    files_->RemoveFile(folder_.Path("joined"));
    return joined;
  };
  EXPECT_EQ(parts({"a5", "a4", "a3", "a2", "a1"}), kTrue);
  EXPECT_EQ(parts({"a1", "a2", "a2", "a3", "a4", "a5"}), kTrue);
  EXPECT_EQ(parts({"a1", "a2", "a4", "a5"}), kFalse);
  EXPECT_EQ(parts({"a1", "a2", "a3", "a4"}), kFalse);
  EXPECT_EQ(parts({"a2", "a3", "a4", "a5"}), kFalse);
  EXPECT_EQ(parts({"a1", "a2", "b3", "a4", "a5"}), kFalse);
  EXPECT_EQ(parts({"a1", "a2", "a3", "a4", "none"}), kFalse);
  EXPECT_EQ(parts({}), kFalse);
}

TEST_F(UUCodeTest, PartsOfOtherProgramsAreJoinedAsGiven) {
  const std::vector<std::string> paths = {
      Write("1", "From: Me\r\nSubject: first (1/2)\r\n\r\nbegin 644 ..\\..\\con.txt\r\n#0V%T\r\n"),
      Write("2", "From: Me\r\nSubject: second (2/2)\r\n\r\n#1&]G\r\n`\r\nend\r\n-- \r\nMe"),
  };
  ShortBool result = kFalse;
  codec_.UUDecodeFiles(paths, folder_.Path(), result);
  EXPECT_EQ(result, kTrue);
  EXPECT_EQ(Read("con_.txt"), "CatDog");
  codec_.UUDecodeFiles(std::span(paths).first(1), folder_.Path("joined"), result);
  EXPECT_EQ(result, kFalse);
}

TEST_F(UUCodeTest, AFailureLeavesNoOutputAndTheInputUntouched) {
  const std::string encoded = Encode(SomeBytes(300000), UUCode::kGraveAccentStyle);
  const FileOperation operations[] = {&UUCode::UUEncodeFile2, &UUCode::UUDecodeFile,
                                      &UUCode::UUDecodeFile2, &UUCode::Base64EncodeFile,
                                      &UUCode::Base64DecodeFile};
  const std::string input = Write("in", encoded);
  const std::string output = folder_.Path("out");
  ASSERT_TRUE(files_->RemoveFile(output));
  for (const FileOperation operation : operations) {
    const auto failsWith = [&](const std::string& from, const std::string& to) {
      ShortBool result = 7;
      (codec_.*operation)(from, to, result);
      EXPECT_EQ(result, kFalse);
      EXPECT_FALSE(files_->FileExists(output));
      faulty_.writeBudget = faulty_.readBudget = std::numeric_limits<uint64_t>::max();
      faulty_.closeFails = false;
    };
    failsWith(folder_.Path("none"), output);
    failsWith(input, folder_.Path("no/such/folder"));
    failsWith(input, input);
    faulty_.writeBudget = 100000;
    failsWith(input, output);
    faulty_.readBudget = 300000;
    failsWith(input, output);
    faulty_.closeFails = true;
    failsWith(input, output);
  }
  EXPECT_EQ(Read("in"), encoded);
}

TEST_F(UUCodeTest, ASplitThatFailsRemovesThePartsAlreadyMade) {
  TempFolder output;
  std::string directory = output.Path();
  const std::string input = Write("a.bin", SomeBytes(4500));
  ShortBool result = 7;
  faulty_.writeBudget = 3000;
  codec_.UUEncodeFiles(input, directory, 630, result);
  EXPECT_EQ(result, kFalse);
  EXPECT_TRUE(output.Names().empty());
  faulty_.writeBudget = 1000000;
  codec_.UUEncodeFiles(input, directory, 62, result);
  EXPECT_EQ(result, kFalse);
}

}  // namespace
}  // namespace quillon
