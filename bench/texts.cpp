// Composes a message whose text is large, in a character set, beside GMime, which converts with
// iconv: header, conversion, transfer encoding. What comes is thrown away; of smaller texts GMime
// must read the same out of both sides' messages.
#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

#include "bench/support/GMimeSplitter.h"
#include "bench/support/MailHost.h"
#include "bench/support/Main.h"
#include "bench/support/Program.h"
#include "bench/support/SharedLibrary.h"
#include "bench/support/Table.h"
#include "internet/MessageComposer.h"
#include "platform/Platform.h"

namespace quillon::bench {
namespace {

using Object = void*;

constexpr int kRounds = 9;
constexpr std::size_t kMiB = std::size_t{1} << 20U;
constexpr std::size_t kLarge = 50 * kMiB;
constexpr std::size_t kBlock = 64 * 1024;
constexpr double kMega = 1e6;

// Values of GMime's enumerations.
constexpr int kFrom = 1;
constexpr int kTo = 3;
constexpr int kBase64 = 4;
constexpr int kQuotedPrintable = 5;
constexpr int kCrLf = 1;

struct Language {
  const char* name;
  const char* charset;
  int encoding;  // the shorter one, which we choose ourselves
  const char* goal;
  std::array<std::string_view, 4> words;
};

constexpr std::array kLanguages{
    Language{"German in UTF-8",
             "utf-8",
             kQuotedPrintable,
             ">= 2",
             {"Die Stra\xC3\x9F"
              "e ",
              "ist sch\xC3\xB6n ", "und nicht lang, ", "wie alle wissen.\n"}},
    Language{"Russian in KOI8-R",
             "koi8-r",
             kBase64,
             "",
             {"\xD0\xA3\xD0\xBB\xD0\xB8\xD1\x86\xD0\xB0 ", "\xD0\xBD\xD0\xB5 ",
              "\xD0\xB4\xD0\xBB\xD0\xB8\xD0\xBD\xD0\xBD\xD0\xB0\xD1\x8F, ",
              "\xD0\xBA\xD0\xB0\xD0\xBA \xD0\xB2\xD1\x81\xD0\xB5.\n"}}};

std::string TextOf(const Language& language, std::size_t size) {
  std::string text;
  text.reserve(size + 64);
  // Words in an order that does not repeat with the lines.
  for (std::size_t i = 0; text.size() < size; ++i) text += language.words[(i * i + i / 7) % 4];
  return text + "\n";
}

class Ours {
 public:
  Ours() : log_(*files_, scratch_.Path().string()) {}

  std::string Compose(const Language& language, const std::string& text, bool keep) {
    OutgoingMessage message;
    message.from = "Ann <ann@example.com>";
    message.whoTo = {"Bob <bob@example.com>"};
    message.subject = "A long text";
    message.body = text;
    message.modern = true;
    message.uniqueId = "1";
    message.encoder.emplace(language.charset, false, *encoder_);
    MessageComposer composer({*files_, *codePage_, *clock_, log_}, {}, std::move(message));
    while (!composer.Step()) {
    }
    const auto data = composer.Take();
    std::string wire;
    while (data->Fill(wire, kBlock) == DataSource::State::More) {
      if (!keep) wire.clear();
    }
    return wire;
  }

 private:
  ScratchDirectory scratch_;
  std::unique_ptr<FileSystem> files_ = MakeFileSystem();
  std::unique_ptr<CodePage> codePage_ = MakeAnsiCodePage();
  std::unique_ptr<CharacterEncoder> encoder_ = MakeCharacterEncoder();
  std::unique_ptr<LocalClock> clock_ = MakeLocalClock();
  ProtocolLog log_;
};

// The public beginning of GLib's GByteArray.
struct ByteArray {
  const char* data;
  unsigned size;
};

class Theirs {
 public:
  Theirs() {
    const auto library = GMimeLibrary();
    void (*start)() = nullptr;
    library.Bind(start, "g_mime_init");
    start();
    library.Bind(unref_, "g_object_unref");
    library.Bind(makeMessage_, "g_mime_message_new");
    library.Bind(addMailbox_, "g_mime_message_add_mailbox");
    library.Bind(setSubject_, "g_mime_message_set_subject");
    library.Bind(makeText_, "g_mime_text_part_new");
    library.Bind(setCharset_, "g_mime_text_part_set_charset");
    library.Bind(setText_, "g_mime_text_part_set_text");
    library.Bind(setEncoding_, "g_mime_part_set_content_encoding");
    library.Bind(setPart_, "g_mime_message_set_mime_part");
    library.Bind(write_, "g_mime_object_write_to_stream");
    library.Bind(makeNull_, "g_mime_stream_null_new");
    library.Bind(makeMemory_, "g_mime_stream_mem_new");
    library.Bind(bytesOf_, "g_mime_stream_mem_get_byte_array");
    Object (*makeFormat)() = nullptr;
    library.Bind(makeFormat, "g_mime_format_options_new");
    void (*setNewlines)(Object format, int newlines) = nullptr;
    library.Bind(setNewlines, "g_mime_format_options_set_newline_format");
    format_ = makeFormat();  // kept for good
    setNewlines(format_, kCrLf);
  }

  std::string Compose(const Language& language, const std::string& text, bool keep) {
    auto* const message = makeMessage_(1);
    addMailbox_(message, kFrom, "Ann", "ann@example.com");
    addMailbox_(message, kTo, "Bob", "bob@example.com");
    setSubject_(message, "A long text", "utf-8");
    auto* const part = makeText_();
    setCharset_(part, language.charset);
    setText_(part, text.c_str());
    setEncoding_(part, language.encoding);
    setPart_(message, part);
    auto* const stream = keep ? makeMemory_() : makeNull_();
    if (write_(message, format_, stream) < 0) throw std::runtime_error("GMime writes nothing");
    std::string wire;
    if (keep) wire.assign(bytesOf_(stream)->data, bytesOf_(stream)->size);
    for (auto* const object : {stream, part, message}) unref_(object);
    return wire;
  }

 private:
  void (*unref_)(Object) = nullptr;
  Object (*makeMessage_)(int pretty) = nullptr;
  void (*addMailbox_)(Object, int type, const char* name, const char* address) = nullptr;
  void (*setSubject_)(Object, const char* subject, const char* charset) = nullptr;
  Object (*makeText_)() = nullptr;
  void (*setCharset_)(Object, const char* charset) = nullptr;
  void (*setText_)(Object, const char* text) = nullptr;
  void (*setEncoding_)(Object, int encoding) = nullptr;
  void (*setPart_)(Object, Object part) = nullptr;
  ssize_t (*write_)(Object, Object format, Object stream) = nullptr;
  Object (*makeNull_)() = nullptr;
  Object (*makeMemory_)() = nullptr;
  ByteArray* (*bytesOf_)(Object) = nullptr;
  Object format_ = nullptr;
};

std::string WithoutReturns(std::string text) {
  std::erase(text, '\r');
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

void RequireSame(const Language& language, Ours& ours, Theirs& theirs) {
  const auto text = TextOf(language, kMiB);
  GMimeSplitter reader;
  for (const auto& wire :
       {ours.Compose(language, text, true), theirs.Compose(language, text, true)}) {
    if (WithoutReturns(reader.Split(wire, {}).body) != WithoutReturns(text)) {
      throw std::runtime_error(std::string("another text comes of ") + language.name);
    }
  }
}

int Run() {
  Ours ours;
  Theirs theirs;
  for (const auto& language : kLanguages) {
    RequireSame(language, ours, theirs);
    const auto text = TextOf(language, kLarge);
    const auto rate = [&](auto& side) {
      return Side([&] {
        const auto time = Seconds([&] { side.Compose(language, text, false); });
        return static_cast<double>(text.size()) / kMega / time;
      });
    };
    PrintRow(std::string("50 MiB composed, ") + language.name, "GMime",
             Compare(kRounds, rate(ours), rate(theirs)), " MB/s", language.goal);
  }
  return 0;
}

}  // namespace
}  // namespace quillon::bench

int main() {
  return quillon::bench::Main("bench_texts", [] { return quillon::bench::Run(); });
}
