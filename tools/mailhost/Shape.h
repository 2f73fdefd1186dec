// How the bytes of a reply are cut into sends.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

namespace mailhost {

struct Shape {
  enum class Kind { kWhole, kLine, kPieces };

  Kind kind = Kind::kWhole;
  std::size_t pieceSize = 0;         // of kPieces
  std::chrono::milliseconds gap{1};  // between two pieces

  // The length of the first piece of `bytes`.
  std::size_t PieceLength(std::string_view bytes) const;

  bool operator==(const Shape&) const = default;
};

}  // namespace mailhost
