// Fills a header table from what the POP session reads. The records hold the bytes of the wire. A
// table that would take too much memory ends the operation with 30.
//
// The lines of a header are kept until the next one has been asked for, and read then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "codec/HeaderField.h"
#include "codec/HeaderTable.h"
#include "internet/PopSession.h"

namespace quillon {

struct HeaderOptions {
  std::size_t maximum = 0;  // records
  bool unreadOnly = false;  // leave out what the "Status" field calls read
  std::string dateFormat;
};

class HeaderCollector final : public HeaderSink {
 public:
  // `begins` is called once, before the first record.
  explicit HeaderCollector(HeaderOptions options, std::function<void()> begins = {})
      : options_(std::move(options)), begins_(std::move(begins)) {}

  // The records that are whole.
  HeaderTable& Table();

  void OnBegin() override;
  void OnHeaderLine(std::uint32_t number, std::string_view text, bool complete) override;
  bool OnHeaderEnd(std::uint32_t number) override;
  void OnNextRequested() override;
  void OnIdentifier(std::uint32_t number, std::string_view identifier) override;

 private:
  HeaderRecord& RecordOf(std::uint32_t number);
  void ReadLines();
  void RequireRoom();

  HeaderOptions options_;
  std::function<void()> begins_;
  HeaderTable table_;
  HeaderLineReader reader_;
  std::unordered_map<std::uint32_t, std::size_t> indexes_;  // of the records, by message number
  std::uint32_t current_ = 0;                               // message number of the last record
  bool whole_ = true;                                       // so is that one
  std::size_t headerBytes_ = 0;                             // of the current header
  std::size_t memory_ = 0;                                  // that the table holds
  std::string lines_;  // of the current one, each with a LF, to be read yet
};

}  // namespace quillon
