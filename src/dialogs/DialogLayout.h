// Where a dialog stands, and where its controls stand when it changes its size. In pixels.
#pragma once

namespace quillon {

struct Extent {
  int width = 0;
  int height = 0;

  bool operator==(const Extent&) const = default;
};

struct Box {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  bool operator==(const Box&) const = default;
};

// The edges of the dialog that a control keeps its distance to. Between two opposite ones it grows.
namespace anchor {
inline constexpr unsigned kLeft = 1;
inline constexpr unsigned kTop = 2;
inline constexpr unsigned kRight = 4;
inline constexpr unsigned kBottom = 8;
}  // namespace anchor

// A control that does not keep to the left and the top alone.
struct ControlAnchor {
  int control;  // its number in the template
  unsigned edges;
};

// The place of a control in a dialog of `size`, which had the place `base` in one of `baseSize`.
Box AnchoredBox(const Box& base, unsigned edges, const Extent& baseSize, const Extent& size);

// The place of a window: in the middle of `over`, but nowhere outside `work`, the part of the
// screen that is there for windows.
Box CentredBox(const Extent& size, const Box& over, const Box& work);

// A length at another resolution, rounded.
int ScaledLength(int length, int dpi, int baseDpi);

}  // namespace quillon
