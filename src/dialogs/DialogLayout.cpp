#include "dialogs/DialogLayout.h"

#include <algorithm>
#include <cstdint>

namespace quillon {

namespace {

struct Span {
  int start;
  int length;
};

Span Anchored(Span base, bool toStart, bool toEnd, int growth) {
  if (!toEnd) return base;
  if (!toStart) return {base.start + growth, base.length};
  return {base.start, std::max(base.length + growth, 0)};
}

int Centred(int length, Span over, Span work) {
  const int start = over.start + (over.length - length) / 2;
  const int last = work.start + work.length - length;
  return std::max(std::min(start, last), work.start);
}

}  // namespace

Box AnchoredBox(const Box& base, unsigned edges, const Extent& baseSize, const Extent& size) {
  const auto has = [edges](unsigned edge) { return (edges & edge) != 0; };
  const auto across = Anchored({base.left, base.width}, has(anchor::kLeft), has(anchor::kRight),
                               size.width - baseSize.width);
  const auto down = Anchored({base.top, base.height}, has(anchor::kTop), has(anchor::kBottom),
                             size.height - baseSize.height);
  return {across.start, down.start, across.length, down.length};
}

Box CentredBox(const Extent& size, const Box& over, const Box& work) {
  const int width = std::min(size.width, work.width);
  const int height = std::min(size.height, work.height);
  return {Centred(width, {over.left, over.width}, {work.left, work.width}),
          Centred(height, {over.top, over.height}, {work.top, work.height}), width, height};
}

int ScaledLength(int length, int dpi, int baseDpi) {
  if (baseDpi <= 0) return length;
  const auto product = static_cast<std::int64_t>(length) * dpi;
  const auto half = (product < 0 ? -baseDpi : baseDpi) / 2;
  return static_cast<int>((product + half) / baseDpi);
}

}  // namespace quillon
