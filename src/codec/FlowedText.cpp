#include "codec/FlowedText.h"

namespace quillon {

namespace {

constexpr std::string_view kSignature = "-- ";  // stands by itself, though it ends in a blank

struct FlowedLine {
  std::string_view marks;  // ">" for each level of quoting
  std::string_view text;   // without the blank that guards its start
  std::string_view end;
  bool guarded = false;

  bool IsSignature() const { return text == kSignature; }
  bool GoesOn() const { return text.ends_with(' ') && !IsSignature() && !end.empty(); }
};

FlowedLine TakeFlowedLine(std::string_view& rest) {
  FlowedLine line;
  const auto feed = rest.find('\n');
  auto text = rest.substr(0, feed);
  const bool hasReturn = feed != std::string_view::npos && text.ends_with('\r');
  if (hasReturn) text.remove_suffix(1);
  line.end = feed == std::string_view::npos ? std::string_view()
                                            : rest.substr(text.size(), hasReturn ? 2 : 1);
  rest.remove_prefix(text.size() + line.end.size());
  const auto marks = text.find_first_not_of('>');
  line.marks = text.substr(0, marks);
  text.remove_prefix(line.marks.size());
  line.guarded = text.starts_with(' ');
  if (line.guarded) text.remove_prefix(1);
  line.text = text;
  return line;
}

}  // namespace

std::string JoinFlowedText(std::string_view text, bool deletesBlanks) {
  std::string joined;
  joined.reserve(text.size());
  FlowedLine last;
  bool open = false;  // the last line goes on, if the next one is of its paragraph
  while (!text.empty()) {
    const auto line = TakeFlowedLine(text);
    const bool continues = open && line.marks == last.marks && !line.IsSignature();
    if (open && !continues) joined += last.end;
    if (continues) {
      if (deletesBlanks) joined.pop_back();
    } else {
      joined += line.marks;
      if (!line.marks.empty() && line.guarded) joined += ' ';
    }
    joined += line.text;
    open = line.GoesOn();
    if (!open) joined += line.end;
    last = line;
  }
  if (open) joined += last.end;
  return joined;
}

}  // namespace quillon
