// A file made out of others piece by piece, so that whoever has it made can do something else in
// between.
#pragma once

namespace quillon {

class FileEncoder {
 public:
  enum class State { More, Done, Failed };

  // A file that is not complete is removed.
  virtual ~FileEncoder() = default;
  FileEncoder(const FileEncoder&) = delete;
  FileEncoder& operator=(const FileEncoder&) = delete;

  // The next piece of the work, about a block of input. Done: the file is complete. Failed: an
  // input cannot be read or the file cannot be written. No step follows either.
  virtual State Step() = 0;

  // All steps; whether the file is complete.
  bool Run() {
    State state = Step();
    while (state == State::More) state = Step();
    return state == State::Done;
  }

 protected:
  FileEncoder() = default;
};

}  // namespace quillon
