// The other side of the benchmark of received messages: a program that takes messages apart with
// GMime as one would write it, by the rules of this program. The library is bound when the
// benchmark runs, because nothing else wants it.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "bench/support/SplitResult.h"

namespace quillon::bench {

class GMimeSplitter {
 public:
  GMimeSplitter();
  ~GMimeSplitter();
  GMimeSplitter(const GMimeSplitter&) = delete;
  GMimeSplitter& operator=(const GMimeSplitter&) = delete;

  // Parses the message, decodes its header and its text into memory, as UTF-8, and each attachment
  // and alternative into a file of the directory, or into nothing when that is empty.
  SplitResult Split(std::string_view message, const std::string& directory);

 private:
  struct Library;
  class Walk;

  std::unique_ptr<Library> library_;
};

}  // namespace quillon::bench
