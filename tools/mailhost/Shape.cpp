#include "Shape.h"

#include <algorithm>

namespace mailhost {

std::size_t Shape::PieceLength(std::string_view bytes) const {
  if (kind == Kind::kPieces) return std::min(pieceSize, bytes.size());
  if (kind == Kind::kLine) {
    const std::size_t end = bytes.find('\n');
    if (end != std::string_view::npos) return end + 1;
  }
  return bytes.size();
}

}  // namespace mailhost
