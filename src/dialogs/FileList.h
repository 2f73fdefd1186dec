// The files that go with a message, as the user puts them together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ports/MailDialog.h"

namespace quillon {

class FileSystem;

class FileList {
 public:
  struct Line {
    std::string name;
    std::string size;  // in words; says so when the file is not there any more
  };

  FileList(std::vector<MailForm::File> list, FileSystem& files)
      : list_(std::move(list)), files_(files) {}

  const std::vector<MailForm::File>& Files() const noexcept { return list_; }
  Line LineOf(std::size_t index) const;

  // A file that is there already is not put there twice. Throws MailFormFailure 520 or 521.
  void Add(const std::string& path);
  void Remove(std::size_t index);
  // False for what is no name of a file; the old one stays.
  bool Rename(std::size_t index, const std::string& name);

 private:
  std::vector<MailForm::File> list_;
  FileSystem& files_;
};

// How much it is, in words.
std::string SizeText(std::uint64_t bytes);

// The names in one line, or that there are none.
std::string FilesText(const std::vector<MailForm::File>& files);

}  // namespace quillon
