#include "bench/support/GMimeSplitter.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <stdexcept>
#include <sys/types.h>
#include <utility>
#include <vector>

#include "bench/support/SharedLibrary.h"

namespace quillon::bench {

namespace {

// Objects of the library are seen by their address alone.
using Object = void*;

// The public beginning of GLib's GByteArray.
struct ByteArray {
  const std::uint8_t* data;
  unsigned size;
};

// GMIME_NEWLINE_FORMAT_DOS
constexpr int kCrLf = 1;

constexpr std::string_view kLineEnd = "\r\n";

// "NONAME.EML", then "NONAM1.EML".
std::string NameOfTry(const std::string& name, int count) {
  if (count == 0) return name;
  const auto suffix = std::to_string(count);
  const auto dot = std::min(name.find('.'), name.size());
  return name.substr(0, dot - suffix.size()) + suffix + name.substr(dot);
}

}  // namespace

struct GMimeSplitter::Library {
  using ForEach = void (*)(Object parent, Object part, void* data);

  Library() {
    const auto library = GMimeLibrary();
    library.Bind(unref, "g_object_unref");
    library.Bind(isA, "g_type_check_instance_is_a");
    library.Bind(memoryStreamOver, "g_mime_stream_mem_new_with_byte_array");
    library.Bind(setOwner, "g_mime_stream_mem_set_owner");
    library.Bind(fileStream, "g_mime_stream_fs_open");
    library.Bind(nullStream, "g_mime_stream_null_new");
    library.Bind(closeStream, "g_mime_stream_close");
    library.Bind(makeParser, "g_mime_parser_new_with_stream");
    library.Bind(parse, "g_mime_parser_construct_message");
    library.Bind(forEach, "g_mime_message_foreach");
    library.Bind(contentType, "g_mime_object_get_content_type");
    library.Bind(isType, "g_mime_content_type_is_type");
    library.Bind(disposition, "g_mime_object_get_disposition");
    library.Bind(fileName, "g_mime_part_get_filename");
    library.Bind(content, "g_mime_part_get_content");
    library.Bind(writeContent, "g_mime_data_wrapper_write_to_stream");
    library.Bind(innerMessage, "g_mime_message_part_get_message");
    library.Bind(writeObject, "g_mime_object_write_to_stream");
    void (*start)() = nullptr;
    library.Bind(start, "g_mime_init");
    start();
    Object (*makeFormat)() = nullptr;
    library.Bind(makeFormat, "g_mime_format_options_new");
    void (*setNewlines)(Object format, int newlines) = nullptr;
    library.Bind(setNewlines, "g_mime_format_options_set_newline_format");
    format = makeFormat();  // kept for good
    setNewlines(format, kCrLf);
    std::size_t (*type)() = nullptr;
    library.Bind(type, "g_mime_part_get_type");
    part = type();
    library.Bind(type, "g_mime_message_part_get_type");
    messagePart = type();
    library.Bind(type, "g_mime_text_part_get_type");
    textPart = type();
    library.Bind(textOf, "g_mime_text_part_get_text");
    library.Bind(free, "g_free");
    library.Bind(subject, "g_mime_message_get_subject");
    library.Bind(from, "g_mime_message_get_from");
    library.Bind(to, "g_mime_message_get_to");
    library.Bind(addresses, "internet_address_list_to_string");
  }

  void (*unref)(Object) = nullptr;
  int (*isA)(Object, std::size_t type) = nullptr;
  Object (*memoryStreamOver)(ByteArray*) = nullptr;
  void (*setOwner)(Object stream, int owner) = nullptr;
  Object (*fileStream)(const char* path, int flags, int mode, void* error) = nullptr;
  Object (*nullStream)() = nullptr;
  int (*closeStream)(Object) = nullptr;
  Object (*makeParser)(Object stream) = nullptr;
  Object (*parse)(Object parser, void* options) = nullptr;
  void (*forEach)(Object message, ForEach callback, void* data) = nullptr;
  Object (*contentType)(Object) = nullptr;
  int (*isType)(Object contentType, const char* type, const char* subtype) = nullptr;
  const char* (*disposition)(Object) = nullptr;
  const char* (*fileName)(Object) = nullptr;
  Object (*content)(Object) = nullptr;
  ssize_t (*writeContent)(Object content, Object stream) = nullptr;
  Object (*innerMessage)(Object) = nullptr;
  ssize_t (*writeObject)(Object, Object format, Object stream) = nullptr;
  char* (*textOf)(Object textPart) = nullptr;
  void (*free)(void*) = nullptr;
  const char* (*subject)(Object message) = nullptr;
  Object (*from)(Object message) = nullptr;
  Object (*to)(Object message) = nullptr;
  char* (*addresses)(Object list, Object format, int encode) = nullptr;
  Object format = nullptr;  // lines end in CR LF
  std::size_t part = 0;
  std::size_t messagePart = 0;
  std::size_t textPart = 0;
};

// One message: decides what each part is, and writes it.
class GMimeSplitter::Walk {
 public:
  Walk(const Library& library, const std::string& directory)
      : library_(library), directory_(directory) {}

  static void OnPart(Object parent, Object part, void* walk) {
    static_cast<Walk*>(walk)->Take(parent, part);
  }

  void TakeHeader(Object message) {
    if (const auto* const subject = library_.subject(message)) result_.subject = subject;
    for (auto* const list : {library_.from(message), library_.to(message)}) {
      auto* const text = library_.addresses(list, nullptr, 0);
      auto& field = result_.from.empty() ? result_.from : result_.to;
      if (text != nullptr) field = text;
      library_.free(text);
    }
  }

  SplitResult TakeResult() { return std::move(result_); }

 private:
  bool Is(Object part, const char* type, const char* subtype) const {
    return library_.isType(library_.contentType(part), type, subtype) != 0;
  }

  void Take(Object parent, Object part) {
    const bool inAlternative =
        std::find(alternatives_.begin(), alternatives_.end(), parent) != alternatives_.end();
    if (library_.isA(part, library_.messagePart) != 0) {
      TakeMessage(part);
    } else if (library_.isA(part, library_.part) != 0) {
      TakeContent(part, inAlternative);
    } else if (inAlternative || Is(part, "multipart", "alternative")) {
      alternatives_.push_back(part);
    }
  }

  void TakeMessage(Object part) {
    auto* const stream = MakeFile("NONAME.EML");
    Check(library_.writeObject(library_.innerMessage(part), library_.format, stream));
    Close(stream);
  }

  void TakeContent(Object part, bool inAlternative) {
    const char* const name = library_.fileName(part);
    auto* const content = library_.content(part);
    if (name == nullptr && library_.disposition(part) == nullptr && Is(part, "text", "*")) {
      const bool plain = Is(part, "text", "plain");
      if (plain || (!inAlternative && result_.body.empty())) return TakeText(part);
    }
    const auto* const standIn = inAlternative ? "ALTERNAT.HTM" : "NONAME.TXT";
    auto* const stream = MakeFile(name != nullptr ? name : standIn);
    Check(library_.writeContent(content, stream));
    Close(stream);
  }

  void TakeText(Object part) {
    if (library_.isA(part, library_.textPart) == 0) throw std::runtime_error("GMime reads no text");
    auto* const text = library_.textOf(part);
    if (!result_.body.empty() && !result_.body.ends_with(kLineEnd)) result_.body += kLineEnd;
    if (text != nullptr) result_.body += text;
    library_.free(text);
  }

  Object MakeFile(const std::string& name) {
    if (directory_.empty()) return library_.nullStream();
    for (int count = 0; count < 10; ++count) {
      auto path = directory_ + "/" + NameOfTry(name, count);
      auto* const stream =
          library_.fileStream(path.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666, nullptr);
      if (stream == nullptr) continue;
      result_.files.push_back(std::move(path));
      return stream;
    }
    throw std::runtime_error("GMime makes no file " + name);
  }

  void Close(Object stream) const {
    Check(library_.closeStream(stream));
    library_.unref(stream);
  }

  static void Check(ssize_t written) {
    if (written < 0) throw std::runtime_error("GMime does not write");
  }

  const Library& library_;
  const std::string& directory_;
  SplitResult result_;
  std::vector<Object> alternatives_;  // multiparts whose parts are renderings of one content
};

GMimeSplitter::GMimeSplitter() : library_(std::make_unique<Library>()) {}

GMimeSplitter::~GMimeSplitter() = default;

SplitResult GMimeSplitter::Split(std::string_view message, const std::string& directory) {
  // The library reads the bytes where they are.
  ByteArray bytes{reinterpret_cast<const std::uint8_t*>(message.data()),
                  static_cast<unsigned>(message.size())};
  auto* const stream = library_->memoryStreamOver(&bytes);
  library_->setOwner(stream, 0);
  auto* const parser = library_->makeParser(stream);
  auto* const parsed = library_->parse(parser, nullptr);
  library_->unref(parser);
  if (parsed == nullptr) throw std::runtime_error("GMime does not read the message");
  Walk walk(*library_, directory);
  library_->forEach(parsed, &Walk::OnPart, &walk);
  walk.TakeHeader(parsed);
  library_->unref(parsed);
  library_->unref(stream);
  return walk.TakeResult();
}

}  // namespace quillon::bench
