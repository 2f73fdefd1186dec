// The form of the desk's files: lines "key: value", an empty line, and a text to the end. A value
// is one line: a backslash, CR, LF and tab stand in it as \\, \r, \n and \t. The text stands as it
// is.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace desk {

struct PlainFile {
  struct Line {
    std::string key;
    std::string value;  // as in the file
  };
  std::vector<Line> lines;
  std::string text;

  void Add(std::string_view key, std::string_view value);
  // Leaves a line out that would say nothing.
  void AddUnlessEmpty(std::string_view key, std::string_view value);
  void AddFlag(std::string_view key, bool value);
  // Several values in one line.
  void AddColumns(std::string_view key, const std::vector<std::string>& columns);

  // What the first line of that key says, or nothing.
  std::string Value(std::string_view key) const;
  bool Flag(std::string_view key) const;
};

// What a line of several columns says, with empty ones up to `count`.
std::vector<std::string> Columns(std::string_view value, std::size_t count);

// A text in one line.
std::string OnOneLine(std::string_view text);

std::filesystem::path PathFromUtf8(std::string_view text);
std::string Utf8FromPath(const std::filesystem::path& path);

std::optional<std::string> ReadBytes(const std::filesystem::path& path);
// Replaces the file at once: a reader sees the old one or the new one. Throws what the system says.
void ReplaceBytes(const std::filesystem::path& path, std::string_view bytes);
void AppendBytes(const std::filesystem::path& path, std::string_view bytes);

std::optional<PlainFile> ReadPlainFile(const std::filesystem::path& path);
void ReplacePlainFile(const std::filesystem::path& path, const PlainFile& file);

// A rename that another program's glance at the file delays, not fails.
void Rename(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace desk
