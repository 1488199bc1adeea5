// Where everything is in the window, in pixels from its lower left corner.
#pragma once
#include <cstddef>

namespace quillory::window {

struct Box {
  double x, y, width, height;
};

inline constexpr double kWidth = 520;
inline constexpr double kHeight = 196;
inline constexpr double kMargin = 28;

inline constexpr Box kHeading = {kMargin, 144, kWidth - 2 * kMargin, 28};
inline constexpr Box kText = {kMargin, 116, kWidth - 2 * kMargin, 22};
inline constexpr Box kBar = {kMargin, 98, kWidth - 2 * kMargin, 10};
inline constexpr Box kDetail = {kMargin, 70, kWidth - 2 * kMargin, 20};
// An error has no bar, and more to say.
inline constexpr Box kErrorText = {kMargin, 100, kWidth - 2 * kMargin, 40};
inline constexpr Box kErrorDetail = {kMargin, 60, kWidth - 2 * kMargin, 36};

inline constexpr double kButtonHeight = 32;
inline constexpr double kButtonY = 20;
inline constexpr double kButtonGap = 12;
/// Room beside a title.
inline constexpr double kButtonPadding = 22;
inline constexpr double kMinButtonWidth = 92;

/// What of the bar is filled.
constexpr Box filledBar(double fraction) {
  const double share = fraction < 0 ? 0 : fraction > 1 ? 1 : fraction;
  return {kBar.x, kBar.y, kBar.width * share, kBar.height};
}

/// The box of a button whose right edge is at `right`.
constexpr Box buttonBox(double right, double titleWidth) {
  const double wanted = titleWidth + 2 * kButtonPadding;
  const double width = wanted < kMinButtonWidth ? kMinButtonWidth : wanted;
  return {right - width, kButtonY, width, kButtonHeight};
}

}  // namespace quillory::window
