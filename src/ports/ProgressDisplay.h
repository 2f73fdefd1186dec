// A small window that shows the user how far a long operation is.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace quillon {

class ProgressDisplay {
 public:
  // What it shows, as a sum.
  static constexpr std::int16_t kBar = 1;
  static constexpr std::int16_t kText = 2;
  static constexpr std::int16_t kAbortButton = 4;

  // The lines of text, from the top; the bar stands in the middle.
  enum class Line { Status, Server, Amount, Time };

  virtual ~ProgressDisplay() = default;

  // `abort` is called, from inside a wait of the event loop, when the user presses the button.
  virtual void Show(const std::string& caption, std::int16_t parts,
                    std::function<void()> abort) = 0;
  virtual void SetLine(Line line, const std::string& text) = 0;
  // `total` is 0 while it is not known.
  virtual void SetPosition(std::uint64_t done, std::uint64_t total) = 0;
  virtual void Hide() = 0;
};

// For a program without windows.
class NoProgressDisplay final : public ProgressDisplay {
 public:
  void Show(const std::string&, std::int16_t, std::function<void()>) override {}
  void SetLine(Line, const std::string&) override {}
  void SetPosition(std::uint64_t, std::uint64_t) override {}
  void Hide() override {}
};

}  // namespace quillon
