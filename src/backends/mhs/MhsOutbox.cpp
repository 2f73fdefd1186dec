#include "backends/mhs/MhsOutbox.h"

#include <span>

#include "backends/mhs/MhsErrorText.h"
#include "backends/mhs/MhsFailure.h"
#include "backends/mhs/MhsNames.h"
#include "codec/BlockIo.h"

namespace quillon {

namespace {

constexpr int kTries = 100;
constexpr const char* kSending = "Error sending mail";
constexpr const char* kAttaching = "Error attaching file";

// The file is on the disk, whole, or the write fails.
void Finish(File& file, bool written, const char* context) {
  if (!file.Close() || !written) throw MhsFailure(context, mhs::kCannotWrite);
}

}  // namespace

MhsOutbox::MhsOutbox(FileSystem& files, const std::string& directory)
    : files_(files),
      outgoing_(directory + "SND" + files.Separator()),
      parcels_(directory + "PARCEL" + files.Separator()) {}

MhsOutbox::~MhsOutbox() {
  for (const auto& path : made_) files_.RemoveFile(path);
}

std::unique_ptr<File> MhsOutbox::Create(const std::string& extension, std::string& name) {
  files_.MakeDirectory(parcels_);
  for (int tried = 0; tried < kTries; ++tried) {
    name = RandomMhsName();
    auto path = parcels_;
    path += name;
    path += extension;
    auto file = files_.Open(path, OpenMode::kCreateNew);
    if (file != nullptr) {
      made_.push_back(path);
      return file;
    }
    if (!files_.FileExists(path)) break;
  }
  throw MhsFailure(kSending, mhs::kCannotCreate);
}

MhsParcel MhsOutbox::AddParcel(const std::string& file) {
  const auto source = files_.Open(file, OpenMode::kRead);
  if (source == nullptr) throw MhsFailure(kAttaching, mhs::kNoAttachment);
  std::string name;
  const auto parcel = Create({}, name);
  auto buffer = BufferFor(*source, 1);
  for (;;) {
    const auto count = source->Read(buffer);
    if (!count) throw MhsFailure(kAttaching, mhs::kNoAttachment);
    if (*count == 0) break;
    if (!parcel->Write(std::span(buffer).first(*count))) {
      throw MhsFailure(kAttaching, mhs::kCannotWrite);
    }
  }
  Finish(*parcel, true, kAttaching);
  return {name, source->ModificationTime()};
}

void MhsOutbox::AddMessage(std::string_view bytes) {
  std::string name;
  const auto file = Create(kUnfinished, name);
  const bool written =
      file->Write({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  Finish(*file, written, kSending);
  messages_.push_back(parcels_ + name + kUnfinished);
}

void MhsOutbox::Commit() {
  for (const auto& message : messages_) Place(message);
  made_.clear();
}

void MhsOutbox::Place(const std::string& message) {
  for (int tried = 0; tried < kTries; ++tried) {
    auto path = outgoing_ + RandomMhsName();
    if (files_.RenameToNew(message, path)) {
      made_.push_back(std::move(path));
      return;
    }
    if (!files_.FileExists(path)) break;
  }
  throw MhsFailure(kSending, mhs::kCannotCreate);
}

}  // namespace quillon
