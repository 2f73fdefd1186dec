// Received messages taken apart: beside GMime in memory, beside munpack and ripmime as programs;
// what memory a large one takes, and how the time grows with hostile ones.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/support/GMimeSplitter.h"
#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/NullFiles.h"
#include "bench/support/Program.h"
#include "bench/support/ReceivedMail.h"
#include "bench/support/SplitResult.h"
#include "bench/support/Table.h"
#include "codec/HeaderField.h"
#include "codec/MessageSplitter.h"
#include "core/RecipientText.h"
#include "internet/RequestRecords.h"
#include "platform/Platform.h"
#include "ports/CodePage.h"
#include "ports/FileSystem.h"
#include "tools/splitmail/LineFeeder.h"

namespace quillon::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMiB = std::size_t{1} << 20;
constexpr std::size_t kLarge = 50 * kMiB;
constexpr std::size_t kMessages = 50000;
constexpr double kMega = 1e6;
constexpr double kLeastSeconds = 0.03;  // of a round of something short

void MustBe(bool right, const std::string& what) {
  if (!right) throw std::runtime_error(what);
}

// Where the files go: in memory when there is room, so that no disk is measured.
fs::path FastPlace() {
  const fs::path memory = "/dev/shm";
  std::error_code error;
  const auto room = fs::space(memory, error);
  return !error && room.available > 4096 * kMiB ? memory : fs::temp_directory_path();
}

class NativeSplitter {
 public:
  explicit NativeSplitter(FileSystem& files) : files_(files) {}

  // In memory: so much of the text.
  SplitResult Split(std::string_view message, const std::string& directory,
                    std::size_t mostText = SplitSettings().maximumBodyBytes) {
    SplitSettings settings;
    settings.directory = directory;
    settings.maximumBodyBytes = mostText;
    MessageSplitter splitter(files_, {*codePage_, *sets_}, settings);
    splitmail::LineFeeder feeder(splitter);
    SplitMessage split;
    MustBe(feeder.Take(message) && feeder.End(message) && splitter.Finish(split),
           "a file cannot be written");
    SplitResult result;
    result.body = std::move(split.body);
    for (auto& attachment : split.attachments) result.files.push_back(std::move(attachment.file));
    return result;
  }

  // With the fields of its header, decoded.
  SplitResult Read(std::string_view message, const std::string& directory) {
    auto result = Split(message, directory, kLarge);
    auto header = Header(message, {*codePage_, *sets_});
    result.subject = std::move(header.subject);
    result.from = std::move(header.originator);
    result.to = std::move(header.to);
    return result;
  }

 private:
  static HeaderRecord Header(std::string_view message, const TextReader& reader) {
    HeaderTable table(1);
    HeaderLineReader lines;
    while (!message.empty() && !message.starts_with("\r\n")) {
      const auto end = std::min(message.find('\n'), message.size() - 1) + 1;
      lines.Store(table, 0, message.substr(0, end), "NATIVE");
      message.remove_prefix(end);
    }
    return TextTable(std::move(table), {reader, false})[0];
  }

  FileSystem& files_;
  const std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  const std::unique_ptr<CharacterSets> sets_ = MakeCharacterSets();
};

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A side of the comparison: takes a message apart, into files of the directory or into nothing.
using Splitter = std::function<SplitResult(std::string_view message, const std::string& directory)>;

class Received {
 public:
  void Run() {
    MemoryRows();
    const auto mail = Mailbox();
    CheckMail(mail);
    LargeRows();
    MailboxRow("50,000 messages split, files written", mail, directory_, ">= 2");
    MailboxRow("50,000 messages split, files into nothing", mail, "", ">= 2");
    GrowthRows();
  }

 private:
  static std::vector<std::string> Mailbox() {
    OrdinaryMail generator;
    std::vector<std::string> mail;
    for (std::size_t i = 0; i < kMessages; ++i) mail.push_back(generator.Next());
    return mail;
  }

  SplitResult Ours(std::string_view message, const std::string& directory) {
    return (directory.empty() ? intoNothing_ : intoFiles_).Split(message, directory);
  }
  SplitResult OursRead(std::string_view message, const std::string& directory) {
    return (directory.empty() ? intoNothing_ : intoFiles_).Read(message, directory);
  }
  SplitResult Theirs(std::string_view message, const std::string& directory) {
    return gmime_.Split(message, directory);
  }
  Splitter OurSide() {
    return [this](std::string_view message, const std::string& directory) {
      return OursRead(message, directory);
    };
  }
  Splitter TheirSide() {
    return [this](std::string_view message, const std::string& directory) {
      return Theirs(message, directory);
    };
  }

  // Seconds for the message. Its files are removed when the clock stands still.
  static double Timed(const Splitter& splitter, std::string_view message,
                      const std::string& directory) {
    SplitResult result;
    const double seconds = Seconds([&] { result = splitter(message, directory); });
    if (!directory.empty()) {
      for (const auto& path : result.files) fs::remove(path);
    }
    return seconds;
  }

  // --- What is compared is the same work.

  std::map<std::string, std::string> Outcome(const Splitter& splitter, std::string_view message) {
    const auto result = splitter(message, directory_);
    std::map<std::string, std::string> outcome{
        {"", result.body}, {"subject", result.subject}, {"from", result.from}};
    for (const auto& path : result.files) {
      outcome[path] = ContentOf(path);
      fs::remove(path);
    }
    return outcome;
  }

  void CheckSides(std::string_view message, const std::string& name) {
    MustBe(Outcome(OurSide(), message) == Outcome(TheirSide(), message),
           "the two sides make different files of " + name);
  }

  void CheckMail(const std::vector<std::string>& mail) {
    constexpr std::size_t kChecked = 1000;
    for (std::size_t i = 0; i < kChecked; ++i) CheckSides(mail[i], "message " + std::to_string(i));
    std::size_t bytes = 0;
    for (const auto& message : mail) bytes += message.size();
    PrintNote("received: 50,000 messages are " + FigureText(static_cast<double>(bytes) / kMega) +
              " MB; both sides make the same text and files of the first 1,000; messages come from "
              "memory, files go to " +
              FastPlace().string() + ".");
  }

  // --- Whole programs.

  fs::path WriteMessage(std::size_t size, std::size_t text) {
    auto path = scratch_.Path() / "message";
    std::ofstream file(path, std::ios::binary);
    MakeLargeMessage(size, text, [&](std::string_view piece) {
      file.write(piece.data(), static_cast<std::streamsize>(piece.size()));
    });
    file.close();
    MustBe(file.good(), "the message cannot be written");
    return path;
  }

  ProgramRun RunAndClean(const std::vector<std::string>& words, const fs::path& input) {
    const auto run = RunProgram(words, input.string());
    const auto files = std::distance(fs::directory_iterator(directory_), fs::directory_iterator());
    MustBe(files >= static_cast<std::ptrdiff_t>(kLargeMessageFiles), words[0] + " loses files");
    Clean();
    return run;
  }

  void Clean() {
    fs::remove_all(directory_);
    fs::create_directory(directory_);
  }

  std::vector<std::string> SplitMail() const {
    return {(ProgramDirectory() / "splitmail").string(), directory_};
  }

  // First of all, because a program starts with the peak of the one that starts it.
  void MemoryRows() {
    for (const auto size : {10 * kMiB, 1024 * kMiB}) {
      const auto input = WriteMessage(size, size / 8);
      const auto run = RunAndClean(SplitMail(), input);
      PrintRow("splitmail, a message of " + FigureText(static_cast<double>(size) / kMiB) +
                   " MiB, peak memory",
               FigureText(run.peakMemory) + " MiB (goal: < 32)");
      fs::remove(input);
    }
  }

  void LargeRows() {
    std::string message;
    MakeLargeMessage(kLarge, kMiB, [&](std::string_view piece) { message += piece; });
    CheckSides(message, "the large message");
    const auto rate = [&](const Splitter& splitter) {
      return Side([&message, splitter, this] {
        return static_cast<double>(message.size()) / kMega / Timed(splitter, message, directory_);
      });
    };
    PrintRow("50 MiB, twelve attachments, files written", "GMime",
             Compare(9, rate(OurSide()), rate(TheirSide())), " MB/s", ">= 2");
    std::string text;
    MakeLargeText(kLarge, [&](std::string_view piece) { text += piece; });
    CheckSides(text, "the large text");
    const auto textRate = [&](const Splitter& splitter) {
      return Side([&text, splitter, this] {
        return static_cast<double>(text.size()) / kMega / Timed(splitter, text, directory_);
      });
    };
    PrintRow("50 MiB of quoted-printable UTF-8, to text", "GMime",
             Compare(9, textRate(OurSide()), textRate(TheirSide())), " MB/s", ">= 2");
    const auto input = WriteMessage(kLarge, kMiB);
    const std::map<std::string, std::vector<std::string>> peers{
        {"munpack", {"munpack", "-q", "-C", directory_}},
        {"ripmime", {"ripmime", "-i", "-", "-d", directory_}},
    };
    for (const auto& [name, words] : peers) {
      const auto program = [&, this](const std::vector<std::string>& command) {
        return Side([command, &input, &message, this] {
          return static_cast<double>(message.size()) / kMega / RunAndClean(command, input).seconds;
        });
      };
      PrintRow("50 MiB, twelve attachments, whole program", name,
               Compare(5, program(SplitMail()), program(words)), " MB/s", ">= 3");
    }
    fs::remove(input);
  }

  // --- Many messages.

  void MailboxRow(const std::string& name, const std::vector<std::string>& mail,
                  const std::string& directory, const std::string& goal) {
    const auto perSecond = [&](const Splitter& splitter) {
      return Side([&mail, &directory, splitter] {
        double seconds = 0;
        for (const auto& message : mail) seconds += Timed(splitter, message, directory);
        return static_cast<double>(mail.size()) / seconds;
      });
    };
    PrintRow(name, "GMime", Compare(5, perSecond(OurSide()), perSecond(TheirSide())), "/s", goal);
  }

  // --- Growth: milliseconds per MB of an input and of a quarter of it.

  void GrowthRow(const std::string& name, const std::string& large, const std::string& quarter,
                 const std::function<void(const std::string&)>& work) {
    const auto perMegabyte = [&](const std::string& input) {
      return Side([&work, &input, this] {
        double seconds = 0;
        int times = 0;
        for (; seconds < kLeastSeconds; ++times) {
          seconds += Seconds([&] { work(input); });
          Clean();
        }
        return seconds / times * 1e3 / (static_cast<double>(input.size()) / kMega);
      });
    };
    PrintRow(name, "a quarter of it", Compare(5, perMegabyte(large), perMegabyte(quarter)),
             " ms/MB", "<= 1.1");
  }

  void SplitGrowth(const std::string& name, const std::function<std::string(std::size_t)>& make,
                   std::size_t size) {
    GrowthRow(name, make(size), make(size / 4),
              [this](const std::string& message) { Ours(message, directory_); });
  }

  void GrowthRows();
  void HeaderGrowth();
  void LongLineGrowth();

  const ScratchDirectory scratch_{FastPlace()};
  const std::string directory_ = [this] {
    auto path = scratch_.Path() / "files";
    fs::create_directory(path);
    return path.string();
  }();
  const std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  NullFiles nothing_;
  NativeSplitter intoFiles_{*files_};
  NativeSplitter intoNothing_{nothing_};
  GMimeSplitter gmime_;
};

std::string Repeated(std::string_view text, std::size_t count) {
  std::string whole;
  whole.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) whole += text;
  return whole;
}

std::string Parts(const std::string& part, std::size_t count) {
  return "Content-Type: multipart/mixed; boundary=b\r\n\r\n" + Repeated("--b\r\n" + part, count);
}

// One line of content, from pieces until it has the size.
std::string LongLine(const std::string& encoding, std::string_view piece, std::size_t size,
                     const std::string& before = "") {
  return "Content-Type: text/plain\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\n" +
         before + Repeated(piece, size / piece.size()) + "\r\n";
}

void Received::HeaderGrowth() {
  const auto record = [](const std::string& header) {
    HeaderTable table(1);
    HeaderLineReader reader;
    for (std::string_view rest = header; !rest.empty();) {
      const auto end = rest.find('\n') + 1;
      reader.Store(table, 0, rest.substr(0, end), "");
      rest.remove_prefix(end);
    }
    return table[0];
  };
  const auto both = [&, this](const std::string& header) {
    record(header);
    Ours(header, directory_);
  };
  const auto folds = [](std::size_t size) {
    return "Content-Type: text/plain\r\n" + Repeated("\tparameter=value;\r\n", size / 19) + "\r\n";
  };
  GrowthRow("header of 1 MB, folds of one field", folds(kMiB), folds(kMiB / 4), both);
  const auto line = [](std::size_t size) {
    return "Content-Type: text/plain; name=\"" + Repeated("((x) ", size / 5) + "\"\r\n\r\n";
  };
  GrowthRow("header of 1 MB, one line", line(kMiB), line(kMiB / 4), both);
  const auto comments = [](std::size_t size) {
    return Parts(
        "Content-Type: a/b; x=" + Repeated("(", size / 2) + Repeated(")", size / 2) + "y\r\n\r\n",
        20);
  };
  SplitGrowth("fields of 60 KB, nested comments", comments, 60000);
  const auto boundary = [](std::size_t size) {
    return "Content-Type: multipart/mixed; boundary=\"b" + Repeated(" ", size) + "\"\r\n\r\n" +
           Repeated("--c\r\n", size);
  };
  SplitGrowth("boundary of 60 KB, 60,000 lines like it", boundary, 60000);
  const auto recipients = [](std::size_t count) {
    return "To: " + Repeated("\"Name, First\" <first.name@example.com>,\r\n ", count) + "\r\n\r\n";
  };
  // From some MB on the allocator gives the memory of a run back to the system, which costs;
  // between the larger list and its quarter nothing of that changes.
  for (const std::size_t count : {80000U, 320000U}) {
    GrowthRow("To list of " + FigureText(static_cast<double>(count)) + " addresses",
              recipients(count), recipients(count / 4), [&](const std::string& header) {
                MustBe(SplitRecipients(record(header).to, ",", "<>").size() >= count / 4,
                       "recipients are missing");
              });
  }
}

void Received::LongLineGrowth() {
  constexpr std::size_t kSize = 100 * kMiB;
  const struct {
    const char* name;
    const char* encoding;
    const char* piece;
    const char* before;
  } kLines[] = {
      {"line of 100 MB, text", "8bit", "text and more ", ""},
      {"line of 100 MB, base64", "base64", "QUJDREVGR0hJSktM", ""},
      {"line of 100 MB, quoted-printable", "quoted-printable", "a=3Db and more =41", ""},
      {"line of 100 MB, quoted-printable blanks", "quoted-printable", "        ", ""},
      {"line of 100 MB, uuencoded part", "x-uuencode", "M86)C9&5F9VAI", "begin 644 a\r\n"},
      {"line of 100 MB, in a uuencoded file", "7bit", "M86)C9&5F9VAI", "begin 644 a\r\n#:&DA\r\n"},
  };
  for (const auto& line : kLines) {
    SplitGrowth(
        line.name,
        [&](std::size_t size) { return LongLine(line.encoding, line.piece, size, line.before); },
        kSize);
  }
}

void Received::GrowthRows() {
  const auto textParts = [](std::size_t count) { return Parts("\r\nx\r\n", count); };
  SplitGrowth("100,000 parts of text", textParts, 100000);
  const auto fileParts = [](std::size_t count) {
    return Parts("Content-Type: image/gif\r\n\r\nx\r\n", count);
  };
  SplitGrowth("100,000 parts that are files", fileParts, 100000);
  SplitGrowth("8,000 parts that are files", fileParts, 8000);
  HeaderGrowth();
  LongLineGrowth();
}

}  // namespace
}  // namespace quillon::bench

int main() {
  return quillon::bench::Main("bench_received", [] {
    quillon::bench::Received().Run();
    return 0;
  });
}
