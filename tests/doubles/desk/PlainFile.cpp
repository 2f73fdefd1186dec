#include "desk/PlainFile.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <system_error>
#include <thread>

namespace desk {
namespace {

std::string FromOneLine(std::string_view value) {
  std::string text;
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] != '\\' || at + 1 == value.size()) {
      text += value[at];
      continue;
    }
    switch (value[++at]) {
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case 't':
        text += '\t';
        break;
      default:
        text += value[at];
        break;
    }
  }
  return text;
}

void WriteBytes(const std::filesystem::path& path, std::string_view bytes,
                std::ios::openmode mode) {
  std::ofstream file(path, std::ios::binary | mode);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    throw std::filesystem::filesystem_error("write", path,
                                            std::make_error_code(std::errc::io_error));
  }
}

}  // namespace

std::string OnOneLine(std::string_view text) {
  std::string value;
  for (const char c : text) {
    switch (c) {
      case '\\':
        value += "\\\\";
        break;
      case '\n':
        value += "\\n";
        break;
      case '\r':
        value += "\\r";
        break;
      case '\t':
        value += "\\t";
        break;
      default:
        value += c;
        break;
    }
  }
  return value;
}

void PlainFile::Add(std::string_view key, std::string_view value) {
  lines.push_back({std::string(key), OnOneLine(value)});
}

void PlainFile::AddUnlessEmpty(std::string_view key, std::string_view value) {
  if (!value.empty()) Add(key, value);
}

void PlainFile::AddFlag(std::string_view key, bool value) {
  if (value) Add(key, "yes");
}

void PlainFile::AddColumns(std::string_view key, const std::vector<std::string>& columns) {
  std::string value;
  for (const std::string& column : columns) {
    if (&column != &columns.front()) value += '\t';
    value += OnOneLine(column);
  }
  lines.push_back({std::string(key), value});
}

std::string PlainFile::Value(std::string_view key) const {
  for (const Line& line : lines) {
    if (line.key == key) return Columns(line.value, 1).front();
  }
  return {};
}

bool PlainFile::Flag(std::string_view key) const {
  return Value(key) == "yes";
}

std::vector<std::string> Columns(std::string_view value, std::size_t count) {
  std::vector<std::string> columns;
  for (;;) {
    const std::size_t end = value.find('\t');
    columns.push_back(FromOneLine(value.substr(0, end)));
    if (end == std::string_view::npos) break;
    value.remove_prefix(end + 1);
  }
  columns.resize(std::max(columns.size(), count));
  return columns;
}

std::filesystem::path PathFromUtf8(std::string_view text) {
  return {std::u8string(text.begin(), text.end())};
}

std::string Utf8FromPath(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::optional<std::string> ReadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return bytes;
}

void Rename(const std::filesystem::path& from, const std::filesystem::path& to) {
  std::error_code error;
  for (int attempt = 0; attempt < 200; ++attempt) {
    std::filesystem::rename(from, to, error);
    if (!error) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  throw std::filesystem::filesystem_error("rename", from, to, error);
}

void ReplaceBytes(const std::filesystem::path& path, std::string_view bytes) {
  std::filesystem::path fresh = path;
  fresh += ".new";
  WriteBytes(fresh, bytes, std::ios::trunc);
  Rename(fresh, path);
}

void AppendBytes(const std::filesystem::path& path, std::string_view bytes) {
  WriteBytes(path, bytes, std::ios::app);
}

std::optional<PlainFile> ReadPlainFile(const std::filesystem::path& path) {
  const std::optional<std::string> bytes = ReadBytes(path);
  if (!bytes) return std::nullopt;
  PlainFile file;
  std::string_view rest = *bytes;
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.empty()) {
      file.text = rest;
      break;
    }
    const std::size_t colon = line.find(": ");
    if (colon == std::string_view::npos) continue;
    file.lines.push_back({std::string(line.substr(0, colon)), std::string(line.substr(colon + 2))});
  }
  return file;
}

void ReplacePlainFile(const std::filesystem::path& path, const PlainFile& file) {
  std::string bytes;
  for (const PlainFile::Line& line : file.lines) {
    bytes += line.key + ": " + line.value + "\n";
  }
  bytes += "\n" + file.text;
  ReplaceBytes(path, bytes);
}

}  // namespace desk
