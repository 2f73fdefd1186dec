// Packing attachments, beside Info-ZIP's zip at the same factor: whole programs.
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/Program.h"
#include "bench/support/Table.h"

namespace quillon::bench {
namespace {

namespace fs = std::filesystem;

constexpr size_t kMiB = size_t{1} << 20;
constexpr size_t kMixed = 256 * kMiB;
constexpr int kRounds = 5;

// A table as a program exports it, running text, and what is compressed already, in turn.
class MixedData {
 public:
  MixedData() {
    for (std::string& word : words_) {
      for (size_t size = 2 + Number(9); size != 0; --size) {
        word += static_cast<char>('a' + Number(26));
      }
    }
  }

  std::string Piece(size_t size) {
    std::string piece;
    const int kind = next_++ % 3;
    while (piece.size() < size) {
      if (kind == 0) {
        piece += std::to_string(row_++) + ";2026-03-" + std::to_string(Number(31) + 1) + ";" +
                 Word() + ";" + std::to_string(Number(100000)) + ",00\r\n";
      } else if (kind == 1) {
        piece += Word() + (Number(12) == 0 ? ".\r\n" : " ");
      } else {
        piece += static_cast<char>(Number(256));
      }
    }
    piece.resize(size);
    return piece;
  }

 private:
  size_t Number(size_t below) { return random_() % below; }
  // As in languages, few words are frequent.
  const std::string& Word() { return words_[Number(1 + Number(words_.size()))]; }

  // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): always the same data are wanted.
  std::minstd_rand random_{1};
  std::array<std::string, 4000> words_;
  int next_ = 0;
  int row_ = 0;
};

class Packing {
 public:
  void Run() {
    const std::string mixed = Write("mixed", kMixed);
    const std::string large = Write("large", 1024 * kMiB);
    const std::string small = Write("small", 16 * kMiB);
    // First of all, because a program starts with the peak of the one that starts it.
    for (const std::string& file : {small, mixed, large}) {
      PrintRow("zipfiles, " + FigureText(static_cast<double>(fs::file_size(file)) / kMiB) +
                   " MiB, peak memory",
               FigureText(Ours({file}).peakMemory) + " MiB");
    }
    Rows("256 MiB of mixed data", {mixed});
    Rows("256 MiB of mixed data, encrypted", {mixed}, "secret");
    Rows("2,000 files of 8 KiB", Many());
  }

 private:
  std::string Write(const std::string& name, size_t size) {
    std::string path = (scratch_.Path() / name).string();
    std::ofstream file(path, std::ios::binary);
    for (size_t done = 0; done < size; done += kMiB) file << data_.Piece(kMiB);
    file.close();
    if (!file.good()) throw std::runtime_error("no room for the data");
    return path;
  }

  std::vector<std::string> Many() {
    std::vector<std::string> paths;
    for (int i = 0; i < 2000; ++i) {
      paths.push_back((scratch_.Path() / ("file" + std::to_string(i))).string());
      std::ofstream(paths.back(), std::ios::binary) << data_.Piece(8 << 10);
    }
    return paths;
  }

  ProgramRun RunPacker(std::vector<std::string> words, const std::vector<std::string>& files) {
    fs::remove(archive_);
    words.push_back(archive_);
    words.insert(words.end(), files.begin(), files.end());
    const ProgramRun run = RunProgram(words, "/dev/null");
    size_ = static_cast<double>(fs::file_size(archive_));
    return run;
  }

  ProgramRun Ours(const std::vector<std::string>& files, const std::string& password = {}) {
    std::vector<std::string> words{(ProgramDirectory() / "zipfiles").string()};
    if (!password.empty()) words.insert(words.end(), {"--password", password});
    return RunPacker(std::move(words), files);
  }

  ProgramRun Theirs(const std::vector<std::string>& files, const std::string& password) {
    std::vector<std::string> words{"zip", "-5", "-q", "-X", "-j"};
    if (!password.empty()) words.insert(words.end(), {"-P", password});
    return RunPacker(std::move(words), files);
  }

  void Rows(const std::string& name, const std::vector<std::string>& files,
            const std::string& password = {}) {
    double ourSize = 0;
    double theirSize = 0;
    const auto ours = [&] {
      const double seconds = Ours(files, password).seconds;
      ourSize = size_;
      return seconds;
    };
    const auto theirs = [&] {
      const double seconds = Theirs(files, password).seconds;
      theirSize = size_;
      return seconds;
    };
    PrintRow(name, "zip -5", Compare(kRounds, ours, theirs), " s", "<= 1");
    PrintNote("zip: " + name + " are " + FigureText(ourSize / kMiB) + " MiB packed, those of zip " +
              FigureText(theirSize / kMiB) + ".");
  }

  const ScratchDirectory scratch_;
  const std::string archive_ = (scratch_.Path() / "packed.zip").string();
  MixedData data_;
  double size_ = 0;  // of the last archive
};

}  // namespace
}  // namespace quillon::bench

int main() {
  return quillon::bench::Main("bench_zip", [] {
    quillon::bench::Packing().Run();
    return 0;
  });
}
