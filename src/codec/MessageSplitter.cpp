#include "codec/MessageSplitter.h"

#include <utility>

#include "codec/HtmlText.h"
#include "codec/Tnef.h"
#include "core/Text.h"
#include "ports/FileSystem.h"

namespace quillon {

namespace {

// A preamble ("This is a message in MIME format") is a few lines; a longer one is content of a
// message whose boundary is never met, or is given wrongly.
constexpr std::size_t kMaximumPreamble = 64U << 10U;

constexpr std::string_view kTnefName = "winmail.dat";
constexpr std::string_view kDashes = "--";
constexpr std::string_view kLineEnd = "\r\n";

bool IsPlainText(const clsMIMEPart& part) {
  const auto type = UpperAscii(part.contentType.substr(0, part.contentType.find(';')));
  return type.find("TEXT/") == std::string::npos || type.find("TEXT/PLAIN") != std::string::npos;
}

// A part need not say that it is uuencoded. A message in the message is not looked into.
UuSearch SearchIn(const clsMIMEPart& part) {
  if (part.encoding == mime_encoding::kUuencode) return UuSearch::Anywhere;
  const bool plain = part.encoding == mime_encoding::kNone && part.MType != mime_type::kMessage;
  return plain ? UuSearch::AtStart : UuSearch::Nowhere;
}

bool HasType(const clsMIMEPart& part, std::string_view type) {
  const auto media = std::string_view(part.contentType).substr(0, part.contentType.find(';'));
  return EqualsIgnoreCase(Trim(media), type);
}

bool IsTnef(const clsMIMEPart& part) {
  return HasType(part, "application/ms-tnef") || HasType(part, "application/vnd.ms-tnef");
}

bool HasExtension(const std::string& name) {
  return name.find('.') != std::string::npos;
}

}  // namespace

MessageSplitter::MessageSplitter(FileSystem& files, const TextReader& reader,
                                 const SplitSettings& settings)
    : reader_(reader),
      settings_(settings),
      attachments_(files),
      body_(reader_, settings_, attachments_) {}

bool MessageSplitter::Line(std::string_view line, bool endsLine) {
  const bool whole = atLineStart_ && endsLine;
  atLineStart_ = endsLine;
  TakeLine(line, endsLine, whole);
  return !attachments_.Failed();
}

void MessageSplitter::TakeLine(std::string_view line, bool endsLine, bool whole) {
  if (whole && line.starts_with(kDashes) && BoundaryLine(line)) return;
  switch (state_) {
    case State::Header:
      HeaderLine(line, endsLine, whole);
      break;
    case State::Preamble:
      PreambleLine(line, endsLine);
      break;
    case State::Content:
      ContentLine(line, endsLine);
      break;
    case State::Epilogue:
      break;
  }
}

void MessageSplitter::HeaderLine(std::string_view line, bool endsLine, bool whole) {
  switch (header_.Line(line, endsLine)) {
    case PartHeader::Result::More:
      if (!inMessageHeader_ || !settings_.headersInBody) break;
      body_.AddInFront(line);
      if (endsLine) body_.AddInFront(kLineEnd);
      break;
    case PartHeader::Result::Ended:
      StartContent();
      break;
    case PartHeader::Result::Content:
      StartContent();
      TakeLine(line, endsLine, whole);
      break;
  }
}

// RFC 2046, section 5.1.1. All open containers count: an outer boundary ends inner ones that were
// never closed. A boundary may begin with another, so the longest decides, of equal ones the
// innermost.
MessageSplitter::Delimiter MessageSplitter::DelimiterOf(std::string_view line) {
  const auto text = line.substr(kDashes.size());
  Delimiter found;
  std::size_t length = 0;
  for (std::size_t depth = 0; depth < stack_.Count(); ++depth) {
    const std::string& boundary = stack_.FromTop(depth).part.Boundary;
    if (boundary.size() <= length || !text.starts_with(boundary)) continue;
    const auto rest = text.substr(boundary.size());
    const bool ends = rest.starts_with(kDashes);
    if (!ends && rest.find_first_not_of(" \t") != std::string_view::npos) continue;
    found = {stack_.Count() - depth, ends};
    length = boundary.size();
  }
  return found;
}

bool MessageSplitter::BoundaryLine(std::string_view line) {
  if (!boundariesCount_) return false;
  const auto delimiter = DelimiterOf(line);
  if (delimiter.level == 0) return false;
  EndContent(ContentEnd::Boundary);
  while (stack_.Count() > delimiter.level) CloseContainer(ContentEnd::Boundary);
  auto& container = stack_.TopOfStackObject();
  if (!delimiter.ends) {
    container.hasParts = true;
    container.preamble = std::string();
    StartPart();
  } else if (container.hasParts) {
    CloseContainer(ContentEnd::Boundary);
    state_ = State::Epilogue;
  } else {
    state_ = State::Preamble;  // no part has begun: what follows is text like what stands before
  }
  return true;
}

// A multipart in which no part has begun is kept as text.
void MessageSplitter::CloseContainer(ContentEnd end) {
  auto container = stack_.Pop();
  if (container.rendering != nullptr) container.rendering->Keep();
  if (container.hasParts) return;
  if (end == ContentEnd::Boundary && container.preamble.ends_with(kLineEnd)) {
    container.preamble.resize(container.preamble.size() - kLineEnd.size());
  }
  if (!container.preamble.empty()) KeepPreamble(container);
}

void MessageSplitter::KeepPreamble(Container& container) {
  if (!std::exchange(container.preambleBegun, true)) {
    body_.SeparateFromNext();
    body_.Begin({});
  }
  hasBody_ = true;
  body_.Append(std::exchange(container.preamble, {}));
}

void MessageSplitter::StartPart() {
  state_ = State::Header;
  if (++partCount_ < kMaximumParts) return;
  // Too many parts: from here on all is one attachment as it stands, headers and boundaries
  // included.
  boundariesCount_ = false;
  StartRawAttachment();
}

void MessageSplitter::StartRawAttachment() {
  clsMIMEPart part;
  part.MType = mime_type::kOther;
  state_ = State::Content;
  if (!settings_.suppressAttachments) OpenFile(part, Role::Attachment, UuSearch::Nowhere);
}

void MessageSplitter::StartContent() {
  if (std::exchange(inMessageHeader_, false) && settings_.headersInBody) {
    body_.AddInFront(kLineEnd);
  }
  const bool inDigest =
      stack_.Count() > 0 && stack_.TopOfStackObject().part.MType == mime_type::kDigest;
  const auto held = header_.TakeHeld();
  OpenContent(header_.Finish(inDigest, reader_));
  for (std::string_view rest = held; !rest.empty();) {
    const auto end = rest.find(kLineEnd);
    TakeLine(rest.substr(0, end), end != std::string_view::npos, false);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + kLineEnd.size());
  }
}

void MessageSplitter::OpenContent(clsMIMEPart part) {
  auto search = SearchIn(part);
  if (mime_type::IsMultipart(part.MType)) {
    if (stack_.Count() < kMaximumDepth) {
      Container container;
      container.group = part.MType == mime_type::kAlternative ? stack_.Count() + 1
                        : stack_.Count() > 0                  ? stack_.TopOfStackObject().group
                                                              : 0;
      container.part = std::move(part);
      stack_.Push(std::move(container));
      state_ = State::Preamble;
      return;
    }
    part.MType = mime_type::kOther;  // nested too deeply: kept whole
    part.encoding = mime_encoding::kNone;
    search = UuSearch::Nowhere;
  }
  state_ = State::Content;
  const auto role = RoleOf(part);
  if (role == Role::Body) {
    if (hasBody_) body_.SeparateFromNext();
    body_.Begin(part.form);
    OpenText(part, SinkFor(part, role, body_), search);
  } else if (role == Role::Rendering) {
    OpenText(part, SinkFor(part, role, *GroupOf(stack_.TopOfStackObject())->rendering), search);
  } else if (role != Role::Discard) {
    OpenFile(part, role, search);
    if (role == Role::Alternative && HoldHtml(part, role, nullptr)) file_->CopyTo(*heldHtml_);
  } else if (HoldHtml(part, role, nullptr)) {
    text_ = std::make_unique<TextPart>(settings_, attachments_, *heldHtml_, part.encoding,
                                       UuSearch::Nowhere);
  }
}

// False when it is none, or none that anybody wants.
bool MessageSplitter::HoldHtml(const clsMIMEPart& part, Role role, ByteSink* onward) {
  const bool isHtml = HasType(part, "text/html") && part.Name.empty() && !header_.IsAttachment();
  if (!isHtml) return false;
  const bool becomesText = settings_.htmlAsText && role != Role::Discard;
  if (html_ && !becomesText) return false;
  heldHtml_ =
      std::make_unique<HeldHtml>(part.form, settings_.maximumBodyBytes, onward, becomesText);
  htmlRole_ = role;
  return true;
}

ByteSink& MessageSplitter::SinkFor(const clsMIMEPart& part, Role role, ByteSink& onward) {
  return HoldHtml(part, role, &onward) ? *heldHtml_ : onward;
}

// What is too long to be held has gone on as it came.
void MessageSplitter::FinishHtml() {
  if (heldHtml_ == nullptr) return;
  const bool isTooLong = heldHtml_->IsTooLong();
  auto html = std::exchange(heldHtml_, nullptr)->Take(reader_);
  if (settings_.htmlAsText && !isTooLong) PutHtmlAsText(html);
  if (!html_) html_ = std::move(html);
}

void MessageSplitter::PutHtmlAsText(const std::string& html) {
  const TextForm form{"utf-8"};
  if (htmlRole_ == Role::Body) {
    body_.Begin(form);
    body_.Append(PlainTextOfHtml(html));
    return;
  }
  auto* const group = stack_.Count() > 0 ? GroupOf(stack_.TopOfStackObject()) : nullptr;
  if (htmlRole_ == Role::Discard || group == nullptr || group->hasBody) return;
  if (group->rendering == nullptr) {
    group->rendering = std::make_unique<HeldRendering>(body_, settings_.maximumBodyBytes, form);
  } else if (htmlRole_ == Role::Alternative) {
    return;
  }
  group->rendering->Begin(form);
  group->rendering->Append(PlainTextOfHtml(html));
  hasBody_ = true;
}

MessageSplitter::Container* MessageSplitter::GroupOf(const Container& container) {
  return container.group == 0 ? nullptr : &stack_.FromTop(stack_.Count() - container.group);
}

MessageSplitter::Role MessageSplitter::RoleOf(const clsMIMEPart& part) {
  const bool unnamedText =
      part.MType == mime_type::kText && part.Name.empty() && !header_.IsAttachment();
  auto* const group = stack_.Count() > 0 ? GroupOf(stack_.TopOfStackObject()) : nullptr;
  if (group != nullptr && unnamedText) return RoleInGroup(part, *group);
  if (unnamedText && (IsPlainText(part) || !hasBody_)) return Role::Body;
  return settings_.suppressAttachments ? Role::Discard : Role::Attachment;
}

MessageSplitter::Role MessageSplitter::RoleInGroup(const clsMIMEPart& part, Container& group) {
  if (IsPlainText(part) && !group.hasBody) {
    group.hasBody = true;
    if (group.rendering != nullptr && group.rendering->IsKept()) group.rendering->Keep();
    group.rendering.reset();
    return Role::Body;
  }
  if (!settings_.suppressAlternatives && !settings_.suppressAttachments) return Role::Alternative;
  // Without files the first rendering is the body, should there be no plain one.
  if (group.hasBody || group.rendering != nullptr) return Role::Discard;
  group.rendering = std::make_unique<HeldRendering>(body_, settings_.maximumBodyBytes, part.form);
  return Role::Rendering;
}

std::string MessageSplitter::NameOf(const clsMIMEPart& part, Role role) const {
  const auto extension = ExtensionOfType(part.contentType);
  if (!part.Name.empty()) {
    // A forwarded message is named by its subject, as a rule.
    if (part.MType == mime_type::kMessage && !HasExtension(part.Name) && !extension.empty()) {
      return part.Name + "." + extension;
    }
    return part.Name;
  }
  if (role == Role::Alternative) return AlternativeName(part.contentType);
  return "NONAME." + (extension.empty() ? "DAT" : extension);
}

void MessageSplitter::OpenText(const clsMIMEPart& part, ByteSink& sink, UuSearch search) {
  hasBody_ = true;
  if (search == UuSearch::AtStart) search = UuSearch::Anywhere;
  text_ = std::make_unique<TextPart>(settings_, attachments_, sink, part.encoding, search);
}

void MessageSplitter::OpenFile(const clsMIMEPart& part, Role role, UuSearch search) {
  if (IsTnef(part)) firstTnef_ = attachments_.Count();
  file_ = std::make_unique<FilePart>(settings_, attachments_, NameOf(part, role), part.Name,
                                     part.encoding, search, header_.Label());
}

void MessageSplitter::PreambleLine(std::string_view line, bool endsLine) {
  auto& container = stack_.TopOfStackObject();
  container.preamble += line;
  if (endsLine) container.preamble += kLineEnd;
  // Content after all; should the boundary still come, its parts are read as ever.
  if (container.preamble.size() > kMaximumPreamble) KeepPreamble(container);
}

void MessageSplitter::ContentLine(std::string_view line, bool endsLine) {
  if (text_ != nullptr) {
    text_->Line(line, endsLine);
  } else if (file_ != nullptr) {
    file_->Line(line, endsLine);
  }
}

void MessageSplitter::EndContent(ContentEnd end) {
  // A part that ended within its header has no content, but it may have a name.
  if (state_ == State::Header && header_.HasLines()) StartContent();
  if (text_ != nullptr) text_->Finish(end);
  if (file_ != nullptr) file_->Finish(end);
  text_.reset();
  file_.reset();
  FinishHtml();
  NoteTnef();
}

void MessageSplitter::NoteTnef() {
  if (!firstTnef_) return;
  for (auto i = *firstTnef_; i < attachments_.Count(); ++i) {
    tnefPaths_.insert(attachments_.PathOf(i));
  }
  firstTnef_.reset();
}

// What a file holds stands behind all that came by itself.
void MessageSplitter::OpenTnefFiles() {
  Tnef tnef(reader_, settings_, attachments_, body_, html_);
  std::size_t next = 0;
  for (auto left = attachments_.Count(); left > 0 && !attachments_.Failed(); --left) {
    auto file = EqualsIgnoreCase(attachments_.NameOf(next), kTnefName) ||
                        tnefPaths_.contains(attachments_.PathOf(next))
                    ? attachments_.Read(next)
                    : nullptr;
    const bool isOpened = file != nullptr && tnef.Open(*file);
    file.reset();
    if (isOpened) {
      attachments_.Remove(next);
    } else {
      ++next;
    }
  }
}

bool MessageSplitter::Finish(SplitMessage& message) {
  EndContent(ContentEnd::Message);
  while (stack_.Count() > 0) CloseContainer(ContentEnd::Message);
  if (settings_.expandTnef) OpenTnefFiles();
  message.body = body_.Finish();
  if (attachments_.Failed()) return false;
  message.html = std::move(html_).value_or(std::string());
  message.attachments = attachments_.Keep();
  return true;
}

}  // namespace quillon
