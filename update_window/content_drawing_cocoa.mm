#import "update_window/content_drawing_cocoa.h"

#include <optional>
#include <vector>

#include "update_window/layout.h"

namespace quillory::window {

struct PlacedButton {
  Button button;
  Box box;
};

struct ViewState {
  WindowContent content;
  OnPress onPress;
  std::vector<PlacedButton> buttons;
};

namespace {

struct Colour {
  double red, green, blue;
};
constexpr Colour kInk = {0.12, 0.16, 0.27};
constexpr Colour kQuietInk = {0.40, 0.45, 0.54};
constexpr Colour kErrorInk = {0.70, 0.15, 0.13};
constexpr Colour kGround = {1, 1, 1};
constexpr Colour kEdge = {0.80, 0.83, 0.88};
constexpr Colour kTrack = {0.90, 0.92, 0.95};
constexpr Colour kFill = {0.16, 0.48, 0.74};

constexpr double kHeadingSize = 17;
constexpr double kTextSize = 13;
constexpr double kDetailSize = 12;
constexpr double kButtonRadius = 6;

NSColor* colourOf(const Colour& colour) {
  return [NSColor colorWithCalibratedRed:colour.red green:colour.green blue:colour.blue alpha:1];
}

NSRect rectOf(const Box& box) { return NSMakeRect(box.x, box.y, box.width, box.height); }

NSString* textOf(const std::string& text) {
  NSString* words = [NSString stringWithUTF8String:text.c_str()];
  return words == nil ? @"" : words;
}

// By the names' values, which both Cocoas share: the names themselves are data of a library that
// is not loaded before the window is needed.
NSDictionary* attributes(NSFont* font, const Colour& colour) {
  return [NSDictionary
      dictionaryWithObjectsAndKeys:font, @"NSFont", colourOf(colour), @"NSColor", nil];
}

NSDictionary* plain(double size, const Colour& colour) {
  return attributes([NSFont systemFontOfSize:size], colour);
}

NSDictionary* bold(double size, const Colour& colour) {
  return attributes([NSFont boldSystemFontOfSize:size], colour);
}

NSBezierPath* roundedPath(const Box& box, double radius) {
  return [NSBezierPath bezierPathWithRoundedRect:rectOf(box) xRadius:radius yRadius:radius];
}

void fill(const Box& box, double radius, const Colour& colour) {
  if (box.width <= 0) return;
  [colourOf(colour) set];
  [roundedPath(box, radius) fill];
}

void outline(const Box& box, double radius, const Colour& colour) {
  // Half a pixel further in, so that the line is one pixel and not two halves.
  const Box inside = {box.x + 0.5, box.y + 0.5, box.width - 1, box.height - 1};
  [colourOf(colour) set];
  [roundedPath(inside, radius) stroke];
}

void draw(const std::string& text, const Box& box, NSDictionary* look) {
  if (!text.empty()) [textOf(text) drawInRect:rectOf(box) withAttributes:look];
}

void drawBar(double fraction) {
  constexpr double kRadius = kBar.height / 2;
  fill(kBar, kRadius, kTrack);
  const Box filled = filledBar(fraction);
  // Rounded ends need their room.
  if (filled.width >= kBar.height) fill(filled, kRadius, kFill);
}

void drawButton(const PlacedButton& placed, bool isFirst) {
  const bool isFilled =
      isFirst && (placed.button == Button::kTryAgain || placed.button == Button::kLoad);
  if (isFilled) {
    fill(placed.box, kButtonRadius, kFill);
  } else {
    fill(placed.box, kButtonRadius, kGround);
    outline(placed.box, kButtonRadius, kEdge);
  }
  NSDictionary* look = plain(kTextSize, isFilled ? kGround : kInk);
  NSString* title = textOf(titleOf(placed.button));
  const NSSize size = [title sizeWithAttributes:look];
  const Box& box = placed.box;
  [title drawAtPoint:NSMakePoint(box.x + (box.width - size.width) / 2,
                                 box.y + (box.height - size.height) / 2)
      withAttributes:look];
}

std::vector<PlacedButton> placed(const std::vector<Button>& buttons) {
  std::vector<PlacedButton> result;
  double right = kWidth - kMargin;
  for (const Button button : buttons) {
    const NSSize size = [textOf(titleOf(button)) sizeWithAttributes:plain(kTextSize, kInk)];
    result.push_back({button, buttonBox(right, size.width)});
    right = result.back().box.x - kButtonGap;
  }
  return result;
}

std::optional<Button> buttonAt(const ViewState& state, NSPoint point) {
  for (const PlacedButton& placed : state.buttons) {
    const Box& box = placed.box;
    if (point.x >= box.x && point.x < box.x + box.width && point.y >= box.y &&
        point.y < box.y + box.height)
      return placed.button;
  }
  return std::nullopt;
}

void drawAll(ViewState& state) {
  const WindowContent& content = state.content;
  const Box whole = {0, 0, kWidth, kHeight};
  [colourOf(kGround) set];
  NSRectFill(rectOf(whole));
  outline(whole, 0, kEdge);
  draw(content.heading, kHeading, bold(kHeadingSize, content.isError ? kErrorInk : kInk));
  draw(content.text, content.isError ? kErrorText : kText, plain(kTextSize, kInk));
  draw(content.detail, content.isError ? kErrorDetail : kDetail, plain(kDetailSize, kQuietInk));
  if (content.hasBar) drawBar(content.fraction);
  state.buttons = placed(content.buttons);
  bool isFirst = true;
  for (const PlacedButton& button : state.buttons) {
    drawButton(button, isFirst);
    isFirst = false;
  }
}

}  // namespace

ViewState* newViewState() { return new ViewState; }

void deleteViewState(ViewState* state) { delete state; }

void setContent(ViewState* state, const WindowContent& content) { state->content = content; }

void setOnPress(ViewState* state, const OnPress& onPress) { state->onPress = onPress; }

void drawContent(ViewState* state) { drawAll(*state); }

void pressAt(ViewState* state, NSPoint point) {
  const std::optional<Button> button = buttonAt(*state, point);
  if (button) state->onPress(*button);
}

}  // namespace quillory::window
