#include "codec/ZipClass.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "codec/BlockIo.h"
#include "codec/zip/ZipWriter.h"

namespace quillon {
namespace {

constexpr int kCompressionFactor = 5;

class Packer final : public FileEncoder {
 public:
  Packer(FileSystem& files, std::vector<std::string> paths, std::string archive,
         std::string password)
      : files_(files),
        paths_(std::move(paths)),
        archive_(std::move(archive)),
        password_(std::move(password)) {}

  State Step() override;

 private:
  // Whether every file is there and none is the archive.
  bool CanBegin() const {
    return !paths_.empty() && std::all_of(paths_.begin(), paths_.end(), [this](const auto& path) {
      return OpenInput(files_, path, archive_) != nullptr;
    });
  }
  bool BeginNext();

  FileSystem& files_;
  const std::vector<std::string> paths_;
  const std::string archive_;
  const std::string password_;
  std::optional<ZipWriter> writer_;
  std::size_t next_ = 0;
  std::unique_ptr<File> input_;  // of the one before
};

FileEncoder::State Packer::Step() {
  if (!writer_) {
    if (!CanBegin()) return State::Failed;
    writer_.emplace(files_, archive_, kCompressionFactor, password_);
  }
  if (!input_ && !BeginNext()) return State::Failed;
  const State state = writer_->Step();
  if (state != State::Done) return state;
  input_.reset();
  if (next_ < paths_.size()) return State::More;
  return writer_->Finish() ? State::Done : State::Failed;
}

bool Packer::BeginNext() {
  const std::string& path = paths_[next_++];
  input_ = files_.Open(path, OpenMode::kRead);
  if (!input_) return false;
  writer_->Begin(*input_, path);
  return true;
}

}  // namespace

ShortBool ZipClass::zip() const {
  return ToShortBool(Start()->Run());
}

std::unique_ptr<FileEncoder> ZipClass::Start() const {
  return std::make_unique<Packer>(files_, paths_, zipFile_, password_);
}

void ZipClass::Reset() {
  paths_.clear();
  zipFile_.clear();
  password_.clear();
}

}  // namespace quillon
