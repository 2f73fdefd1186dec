#include <gtest/gtest.h>

#include "dialogs/DialogLayout.h"

namespace quillon::testing {
namespace {

TEST(DialogLayout, ControlsKeepTheirDistanceToTheEdgesTheyAreTiedTo) {
  constexpr Box kBase{10, 20, 30, 40};
  constexpr unsigned kAll = anchor::kLeft | anchor::kTop | anchor::kRight | anchor::kBottom;
  const struct {
    unsigned edges;
    Extent size;
    Box place;
  } cases[] = {
      {anchor::kLeft | anchor::kTop, {150, 170}, {10, 20, 30, 40}},
      {anchor::kRight | anchor::kBottom, {150, 170}, {60, 90, 30, 40}},
      {kAll, {150, 170}, {10, 20, 80, 110}},
      {kAll, {80, 90}, {10, 20, 10, 30}},
      {kAll, {5, 5}, {10, 20, 0, 0}},
  };
  for (const auto& [edges, size, place] : cases) {
    EXPECT_EQ(AnchoredBox(kBase, edges, {100, 100}, size), place) << edges << " " << size.width;
  }
}

TEST(DialogLayout, NoWindowStandsOutsideTheScreen) {
  constexpr Box kWork{0, 30, 1000, 700};
  const struct {
    Extent size;
    Box over;
    Box place;
  } cases[] = {
      {{200, 100}, kWork, {400, 330, 200, 100}},
      {{200, 100}, {100, 130, 300, 200}, {150, 180, 200, 100}},
      {{200, 100}, {-500, -500, 300, 200}, {0, 30, 200, 100}},
      {{200, 100}, {900, 700, 300, 200}, {800, 630, 200, 100}},
      {{2000, 1000}, {100, 100, 300, 200}, {0, 30, 1000, 700}},
  };
  for (const auto& [size, over, place] : cases) EXPECT_EQ(CentredBox(size, over, kWork), place);
}

TEST(DialogLayout, LengthsGrowWithTheResolution) {
  EXPECT_EQ(ScaledLength(101, 144, 96), 152);
  EXPECT_EQ(ScaledLength(-11, 144, 96), -17);
  EXPECT_EQ(ScaledLength(2000000000, 96, 192), 1000000000);
}

}  // namespace
}  // namespace quillon::testing
