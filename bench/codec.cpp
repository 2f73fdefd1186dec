// The codecs in memory beside GMime and memcpy, and file to file beside coreutils, sharutils and
// cp.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/Main.h"
#include "bench/support/Program.h"
#include "bench/support/SharedLibrary.h"
#include "bench/support/Table.h"
#include "codec/Base64.h"
#include "codec/QuotedPrintable.h"
#include "codec/UUCode.h"
#include "codec/UuLines.h"
#include "core/WholeFile.h"
#include "platform/Platform.h"

namespace quillon::bench {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr int kRounds = 7;
constexpr size_t kMemory = size_t{64} << 20;
// What the program reads of a file at a time: whole lines of both encodings.
constexpr size_t kBlock = 57 * 45 * 90;
constexpr size_t kFile = size_t{256} << 20;
constexpr const char* kUnit = " GB/s";

Bytes RandomBytes(size_t size) {
  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same bytes in every run are wanted.
  std::mt19937_64 random(1);
  Bytes bytes(size);
  for (size_t at = 0; at + 8 <= size; at += 8) {
    const uint64_t word = random();
    std::memcpy(bytes.data() + at, &word, sizeof word);
  }
  return bytes;
}

// GMime's coders, bound when the program runs: they are wanted by this benchmark alone.
struct GMime {
  using Step = size_t (*)(const unsigned char* in, size_t size, unsigned char* out, int* state,
                          uint32_t* save);
  using UuStep = size_t (*)(const unsigned char* in, size_t size, unsigned char* out,
                            unsigned char* line, int* state, uint32_t* save);
  // "The begin line has been found."
  static constexpr int kUuBegun = 1 << 16;

  GMime() {
    const auto library = GMimeLibrary();
    library.Bind(encodeBase64, "g_mime_encoding_base64_encode_step");
    library.Bind(decodeBase64, "g_mime_encoding_base64_decode_step");
    library.Bind(encodeUu, "g_mime_encoding_uuencode_step");
    library.Bind(decodeUu, "g_mime_encoding_uudecode_step");
    library.Bind(decodeQuotedPrintable, "g_mime_encoding_quoted_decode_step");
  }

  Step encodeBase64 = nullptr;
  Step decodeBase64 = nullptr;
  UuStep encodeUu = nullptr;
  Step decodeUu = nullptr;
  Step decodeQuotedPrintable = nullptr;
};

void MustBe(bool right, const char* what) {
  if (!right) throw std::runtime_error(std::string(what) + ": wrong result");
}

// 64 MiB of data at once, or as many blocks one after the other through the same memory.
class InMemory {
 public:
  explicit InMemory(size_t size) : size_(size) {}

  void Run() {
    Base64Encoding();
    Base64Decoding();
    UuEncoding();
    UuDecoding();
    QuotedPrintable();
  }

 private:
  void Row(const std::string& name, const Side& ours, const Side& peer, const std::string& goal,
           const std::string& peerName = "GMime") {
    PrintRow(name + (AtOnce() ? "" : ", in blocks"), peerName, Compare(kRounds, ours, peer), kUnit,
             goal);
  }

  // GB of data per second over all of the blocks.
  Side Rate(std::function<void()> work) const {
    return [this, work = std::move(work)] {
      const size_t times = kMemory / size_;
      const double seconds = Seconds([&] {
        for (size_t i = 0; i < times; ++i) work();
      });
      return static_cast<double>(times * size_) / seconds / 1e9;
    };
  }

  bool AtOnce() const { return size_ == kMemory; }

  // The whole beside GMime and memcpy, and the scalar kernel beside GMime.
  void Rows(const std::string& name, const std::function<void(const CodecKernel&)>& work,
            const std::function<void()>& peer, const char* goal, const char* scalarGoal) {
    const Side best = Rate([&] { work(BestKernel()); });
    const Side gmime = Rate(peer);
    Row(name, best, gmime, goal);
    if (scalarGoal == nullptr) return;
    if (AtOnce()) {
      const Side copy = Rate([&] { std::memcpy(out_.data(), data_.data(), size_); });
      Row(name, best, copy, ">= 0.25", "memcpy");
    }
    Row(name + ", scalar", Rate([&] { work(kScalarKernel); }), gmime, scalarGoal);
  }

  void Base64Encoding() {
    const auto ours = [&](const CodecKernel& kernel) {
      EncodeBase64Lines(data_, out_.data(), kernel);
    };
    const auto peer = [&] {
      int state = 0;
      uint32_t save = 0;
      gmime_.encodeBase64(data_.data(), data_.size(), out_.data(), &state, &save);
    };
    Rows("base64 encode", ours, peer, ">= 10", ">= 3");
  }

  void Base64Decoding() {
    Bytes text(Base64EncodedSize(size_));
    EncodeBase64Lines(data_, text.data());
    const auto ours = [&](const CodecKernel& kernel) {
      Base64Decoder decoder(kernel);
      const size_t size = decoder.Decode(text, out_.data());
      MustBe(size + decoder.Finish(out_.data() + size) == size_, "base64 decode");
    };
    const auto peer = [&] {
      int state = 0;
      uint32_t save = 0;
      const size_t size = gmime_.decodeBase64(text.data(), text.size(), out_.data(), &state, &save);
      MustBe(size == size_, "GMime's base64 decode");
    };
    Rows("base64 decode", ours, peer, ">= 10", ">= 3");
  }

  void UuEncoding() {
    const auto ours = [&](const CodecKernel& kernel) { EncodeUuLines(data_, out_.data(), kernel); };
    const auto peer = [&] {
      int state = 0;
      uint32_t save = 0;
      unsigned char line[60] = {};
      gmime_.encodeUu(data_.data(), data_.size(), out_.data(), line, &state, &save);
    };
    Rows("uuencode", ours, peer, ">= 2", nullptr);
  }

  void UuDecoding() {
    // Full lines only, which is what a large file is made of.
    const size_t bytes = size_ / kUuLineBytes * kUuLineBytes;
    Bytes text(UuEncodedSize(bytes));
    EncodeUuLines(std::span(data_).first(bytes), text.data());
    const auto ours = [&](const CodecKernel& kernel) {
      size_t size = 0;
      DecodeFullUuLines(text, out_.data(), size, kernel);
      MustBe(size == bytes, "uudecode");
    };
    const auto peer = [&] {
      int state = GMime::kUuBegun;
      uint32_t save = 0;
      const size_t size = gmime_.decodeUu(text.data(), text.size(), out_.data(), &state, &save);
      MustBe(size == bytes, "GMime's uudecode");
    };
    Rows("uudecode", ours, peer, ">= 2", nullptr);
  }

  // Text of a European language: a letter outside ASCII and a soft break on most lines.
  Bytes QuotedPrintableText() const {
    std::string lines;
    for (int i = 0; i < 40; ++i) {
      lines += "Noch ein Satz dieser Messung, der weit =C3=BCber das Ende einer Zeile reicht,=\r\n";
      if (i % 8 == 7) lines += " und damit Schluss.\r\n";
    }
    Bytes text;
    while (text.size() + lines.size() <= size_) text.insert(text.end(), lines.begin(), lines.end());
    return text;
  }

  static size_t DecodeLines(std::span<const uint8_t> text, uint8_t* out) {
    bool softBreak = false;
    return DecodeQuotedPrintableLines(text.first(text.size() - 2), out, softBreak);
  }

  void QuotedPrintable() {
    const Bytes text = QuotedPrintableText();
    Bytes theirs(text.size());
    int state = 0;
    uint32_t save = 0;
    const size_t size =
        gmime_.decodeQuotedPrintable(text.data(), text.size(), theirs.data(), &state, &save);
    // GMime keeps the line break at the end of the text.
    MustBe(DecodeLines(text, out_.data()) + 2 == size &&
               std::equal(theirs.begin(), theirs.begin() + static_cast<std::ptrdiff_t>(size - 2),
                          out_.begin()),
           "quoted-printable decode");
    const Side ours = Rate([&] { DecodeLines(text, out_.data()); });
    const Side peer = Rate([&] {
      state = 0;
      save = 0;
      gmime_.decodeQuotedPrintable(text.data(), text.size(), out_.data(), &state, &save);
    });
    Row("quoted-printable decode", ours, peer, ">= 4");
  }

  GMime gmime_;
  const size_t size_;
  const Bytes data_ = RandomBytes(size_);
  Bytes out_ = Bytes(size_ + size_ / 2);
};

class FileToFile {
 public:
  FileToFile() {
    std::filesystem::create_directories(folder_);
    WriteWholeFile(*files_, Path("data"), RandomBytes(kFile));
  }
  ~FileToFile() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  FileToFile(const FileToFile&) = delete;
  FileToFile& operator=(const FileToFile&) = delete;

  void Run() {
    Rows("base64 encode", &UUCode::Base64EncodeFile, "data", "b64", "base64 data > peer");
    Rows("base64 decode", &UUCode::Base64DecodeFile, "b64", "back", "base64 -d -i b64 > peer");
    Rows("uuencode", &UUCode::UUEncodeFile2, "data", "uue", "uuencode data data > peer");
    Rows("uudecode", &UUCode::UUDecodeFile, "uue", "back", "uudecode -o peer uue");
  }

 private:
  using Operation = void (UUCode::*)(const std::string&, const std::string&, ShortBool&);

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  Side Command(const std::string& command) const {
    return [line = "cd '" + folder_.string() + "' && rm -f peer && " + command] {
      return RunProgram({"sh", "-c", line}, "/dev/null").seconds;
    };
  }

  // Seconds, so that less than the peer's is a ratio below 1.
  void Rows(const std::string& name, Operation operation, const std::string& input,
            const std::string& output, const std::string& peer) {
    const Side ours = [&] {
      return Seconds([&] {
        ShortBool result = kFalse;
        (UUCode(*files_).*operation)(Path(input), Path(output), result);
        MustBe(result == kTrue, name.c_str());
      });
    };
    const std::string program = peer.substr(0, peer.find(' '));
    PrintRow(name + ", file to file", program, Compare(3, ours, Command(peer)), " s", "<= 1");
    const std::string larger = operation == &UUCode::Base64DecodeFile ? "b64"
                               : operation == &UUCode::UUDecodeFile   ? "uue"
                                                                      : output;
    PrintRow(name + ", file to file", "cp of the larger file",
             Compare(3, ours, Command("cp " + larger + " peer")), " s", "<= 2");
  }

  const std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                        ("quillon-bench-" + std::to_string(std::random_device()()));
  const std::unique_ptr<FileSystem> files_ = MakeFileSystem();
};

}  // namespace
}  // namespace quillon::bench

int main() {
  return quillon::bench::Main("bench_codec", [] {
    quillon::bench::InMemory(quillon::bench::kBlock).Run();
    quillon::bench::InMemory(quillon::bench::kMemory).Run();
    quillon::bench::FileToFile().Run();
    quillon::bench::PrintNote(
        std::string("codec: the kernel is ") + quillon::BestKernel().name +
        "; GB/s are those of the data, 64 MiB at once or in blocks of 225 KiB; files of 256 MiB.");
    return 0;
  });
}
