// Recordings: every exchange with the kernel modules as it was, one behind the other.
//
// All numbers are in the byte order of the machine that the orders went to, which the file's head tells.
//
//   head    0  8 bytes   "vek-rec\n"
//           8  uint32_t  version: 1
//          12  uint32_t  0x01020304
//
//   entry   0  uint32_t  size of the entry, all of it
//           4  uint32_t  length of the record's storage, 16 bytes to 4 MiB
//           8  int32_t   what the gateway returned: 0 when the exchange took place
//          12  uint32_t  bytes of the request, 16 to length
//          16  uint32_t  bytes of the answer, 16 to length
//          20  uint32_t  0
//          24  uint64_t  when it was sent, in nanoseconds since 1970
//          32  uint64_t  how long it took, in nanoseconds
//          40  the record as it was sent, its header (module, length, result, command) included, then as it
//              came back; of both the zeros at the end are left out
//              uint64_t  FNV-1a of all bytes of the entry before it
//
// An entry is written at once. What is not whole at the end of a file is the exchange that was on its way
// when the writer died; the next writer goes on in its place.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// One way through the gateway. The bytes are those of whole records, without the zeros at their ends. While
// an exchange takes place, its answer lies in the record, where the zeros are behind it.
struct Exchanged {
  uint32_t length = 0;  // of the record's storage
  int32_t returned = 0;
  uint64_t sent = 0;  // nanoseconds since 1970
  uint64_t took = 0;  // nanoseconds
  std::string_view request;
  std::string_view answer;
};

// The record without the zeros at its end, but not less than its header.
std::string_view used_part(const void* record, uint32_t length);

// What cannot be read or written as a recording, and why.
struct RecordingError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Appends to a file, which others may append to at the same time.
class Recorder {
 public:
  explicit Recorder(const std::string& path);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  void add(const Exchanged& exchanged);

 private:
  void write_behind_whole_entries(std::string_view bytes);

  std::string path_;
  int file_;
  uint64_t end_ = 0;  // of the entries that are known to be whole
};

// Reads one entry after the other.
class RecordingReader {
 public:
  // Takes the stream over. `name` stands in errors.
  RecordingReader(FILE* stream, std::string name);

  // The next exchange, whose bytes are there until the next call; false at the end. Throws where the
  // recording is damaged.
  bool next(Exchanged& exchanged);
  bool ends_amid_entry() const { return ends_amid_entry_; }

 private:
  struct Close {
    void operator()(FILE* stream) const { fclose(stream); }
  };
  [[noreturn]] void fail(const std::string& why) const;

  std::unique_ptr<FILE, Close> stream_;
  std::string name_;
  std::string entry_;
  uint64_t at_ = 0;
  bool ends_amid_entry_ = false;
};

FILE* open_recording(const std::string& path);

// Answers from a recording. Equal orders get their answers in the order of the recording, the last one for
// good; that holds across processes that were forked behind the constructor.
class Replay {
 public:
  explicit Replay(RecordingReader reader);
  // False when there was no such order.
  bool answer(void* record, uint32_t length, int& returned);
  bool ends_amid_entry() const { return ends_amid_entry_; }

 private:
  struct Answers {
    uint32_t place;  // of the count of those that were given
    std::vector<std::pair<int32_t, std::string>> all;
  };

  std::unordered_map<std::string, Answers> orders_;  // by length and request
  uint32_t* given_ = nullptr;
  bool ends_amid_entry_ = false;
};
