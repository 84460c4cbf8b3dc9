// Recordings: writing, reading, and answering from them.
#include "shell/recording.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "records/order.h"

namespace {

struct FileHead {
  char magic[8] = {'v', 'e', 'k', '-', 'r', 'e', 'c', '\n'};
  uint32_t version = 1;
  uint32_t byte_order = 0x01020304;
};
static_assert(sizeof(FileHead) == 16);

struct EntryHead {
  uint32_t size;
  uint32_t length;
  int32_t returned;
  uint32_t request;
  uint32_t answer;
  uint32_t zero;
  uint64_t sent;
  uint64_t took;
};
static_assert(sizeof(EntryHead) == 40);

using Checksum = uint64_t;
constexpr size_t kAround = sizeof(EntryHead) + sizeof(Checksum);

Checksum checksum(std::string_view bytes) {
  Checksum sum = 0xcbf29ce484222325;
  for (const char byte : bytes) sum = (sum ^ static_cast<uint8_t>(byte)) * 0x100000001b3;
  return sum;
}

bool is_sound(const EntryHead& head) {
  const auto fits = [&](uint32_t bytes) { return bytes >= sizeof(OrderRecord) && bytes <= head.length; };
  return head.length <= kMaxRecordSize && fits(head.request) && fits(head.answer) && head.zero == 0 &&
         head.size == kAround + head.request + head.answer;
}

template <typename T>
std::string_view bytes_of(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string why() { return strerror(errno); }

std::string key_of(uint32_t length, std::string_view request) {
  return std::string(bytes_of(length)).append(request);
}

// Others wait meanwhile.
class Locked {
 public:
  explicit Locked(int file) : file_(file) {
    while (flock(file_, LOCK_EX) != 0) {
      if (errno != EINTR) throw RecordingError("a recording cannot be locked: " + why());
    }
  }
  ~Locked() { flock(file_, LOCK_UN); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  int file_;
};

}  // namespace

std::string_view used_part(const void* record, uint32_t length) {
  const auto* bytes = static_cast<const char*>(record);
  size_t used = length;
  for (uint64_t last; used >= sizeof last + sizeof(OrderRecord); used -= sizeof last) {
    memcpy(&last, bytes + used - sizeof last, sizeof last);
    if (last != 0) break;
  }
  while (used > sizeof(OrderRecord) && bytes[used - 1] == 0) --used;
  return {bytes, used};
}

Recorder::Recorder(const std::string& path)
    : path_(path), file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  struct stat status;
  if (file_ < 0 || fstat(file_, &status) != 0) throw RecordingError(path + ": " + why());
  try {
    if (!S_ISREG(status.st_mode)) throw RecordingError(path + ": no regular file");
    write_behind_whole_entries({});
  } catch (...) {
    close(file_);
    throw;
  }
}

Recorder::~Recorder() { close(file_); }

void Recorder::add(const Exchanged& exchanged) {
  const EntryHead head = {static_cast<uint32_t>(kAround + exchanged.request.size() + exchanged.answer.size()),
                          exchanged.length,
                          exchanged.returned,
                          static_cast<uint32_t>(exchanged.request.size()),
                          static_cast<uint32_t>(exchanged.answer.size()),
                          0,
                          exchanged.sent,
                          exchanged.took};
  std::string entry;
  entry.reserve(head.size);
  entry.append(bytes_of(head)).append(exchanged.request).append(exchanged.answer);
  entry.append(bytes_of(checksum(entry)));
  write_behind_whole_entries(entry);
}

void Recorder::write_behind_whole_entries(std::string_view bytes) {
  const Locked lock(file_);
  struct stat status;
  if (fstat(file_, &status) != 0) throw RecordingError(path_ + ": " + why());
  const auto size = static_cast<uint64_t>(status.st_size);
  std::string all;
  if (end_ == 0) {
    FileHead head;
    const std::string_view wanted = bytes_of(head);
    char found[sizeof head] = {};
    const ssize_t got = pread(file_, found, sizeof found, 0);
    if (got < 0 || !wanted.starts_with(std::string_view(found, static_cast<size_t>(got)))) {
      throw RecordingError(path_ + ": no recording of this machine's, and not written over");
    }
    if (size < sizeof head) {
      all = wanted;
    } else {
      end_ = sizeof head;
    }
  }
  for (EntryHead head; end_ != 0 && end_ + kAround <= size; end_ += head.size) {
    if (pread(file_, &head, sizeof head, static_cast<off_t>(end_)) != ssize_t{sizeof head}) break;
    if (!is_sound(head)) {
      throw RecordingError(path_ + ": damaged at byte " + std::to_string(end_) + ", and not written over");
    }
    if (head.size > size - end_) break;
  }
  if (size > end_ && ftruncate(file_, static_cast<off_t>(end_)) != 0)
    throw RecordingError(path_ + ": " + why());
  all.append(bytes);
  if (all.empty()) return;
  const ssize_t written = pwrite(file_, all.data(), all.size(), static_cast<off_t>(end_));
  if (written != static_cast<ssize_t>(all.size())) {
    const std::string reason = written < 0 ? why() : "no room";
    [[maybe_unused]] const int left = ftruncate(file_, static_cast<off_t>(end_));
    throw RecordingError(path_ + ": " + reason);
  }
  end_ += all.size();
}

RecordingReader::RecordingReader(FILE* stream, std::string name) : stream_(stream), name_(std::move(name)) {
  FileHead head;
  const FileHead wanted;
  if (fread(&head, sizeof head, 1, stream_.get()) != 1 ||
      memcmp(head.magic, wanted.magic, sizeof head.magic) != 0) {
    throw RecordingError(name_ + ": " + (ferror(stream_.get()) != 0 ? why() : "no recording"));
  }
  if (head.byte_order == __builtin_bswap32(wanted.byte_order)) {
    throw RecordingError(name_ + ": of a machine of another byte order");
  }
  if (head.version != wanted.version || head.byte_order != wanted.byte_order) {
    throw RecordingError(name_ + ": a recording of an unknown version");
  }
  at_ = sizeof head;
}

void RecordingReader::fail(const std::string& reason) const {
  throw RecordingError(name_ + ": " + reason + " at byte " + std::to_string(at_));
}

bool RecordingReader::next(Exchanged& exchanged) {
  EntryHead head;
  const size_t got = fread(&head, 1, sizeof head, stream_.get());
  if (ferror(stream_.get()) != 0) fail(why());
  ends_amid_entry_ = got > 0 && got < sizeof head;
  if (got < sizeof head) return false;
  if (!is_sound(head)) fail("damaged");

  // In pieces, so that memory is taken only for what is there.
  entry_.assign(bytes_of(head));
  while (entry_.size() < head.size) {
    const size_t before = entry_.size();
    const size_t wanted = std::min<size_t>(head.size - before, 64 << 10);
    entry_.resize(before + wanted);
    const size_t more = fread(entry_.data() + before, 1, wanted, stream_.get());
    if (ferror(stream_.get()) != 0) fail(why());
    if (more < wanted) {
      ends_amid_entry_ = true;
      return false;
    }
  }
  const std::string_view entry = entry_;
  const size_t behind = entry.size() - sizeof(Checksum);
  Checksum sum;
  memcpy(&sum, entry.data() + behind, sizeof sum);
  if (sum != checksum(entry.substr(0, behind))) fail("damaged");
  exchanged = {head.length,
               head.returned,
               head.sent,
               head.took,
               entry.substr(sizeof head, head.request),
               entry.substr(sizeof head + head.request, head.answer)};
  at_ += head.size;
  return true;
}

FILE* open_recording(const std::string& path) {
  FILE* const stream = fopen(path.c_str(), "re");
  if (stream == nullptr) throw RecordingError(path + ": " + why());
  return stream;
}

Replay::Replay(RecordingReader reader) {
  for (Exchanged exchanged; reader.next(exchanged);) {
    const auto [at, is_new] = orders_.try_emplace(key_of(exchanged.length, exchanged.request));
    if (is_new) at->second.place = static_cast<uint32_t>(orders_.size() - 1);
    at->second.all.emplace_back(exchanged.returned, exchanged.answer);
  }
  ends_amid_entry_ = reader.ends_amid_entry();
  void* const counts = mmap(nullptr, (orders_.size() + 1) * sizeof *given_, PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (counts == MAP_FAILED) throw std::bad_alloc();
  given_ = static_cast<uint32_t*>(counts);
}

bool Replay::answer(void* record, uint32_t length, int& returned) {
  const std::string_view request = used_part(record, length);
  const auto found = orders_.find(key_of(length, request));
  if (found == orders_.end()) return false;
  const Answers& answers = found->second;
  uint32_t& given = given_[answers.place];
  const auto& [result, bytes] = answers.all[std::min<size_t>(given, answers.all.size() - 1)];
  given += given < answers.all.size() ? 1 : 0;
  // The rest of the request is zero already.
  auto* const into = static_cast<char*>(record);
  if (request.size() > bytes.size()) memset(into + bytes.size(), 0, request.size() - bytes.size());
  std::ranges::copy(bytes, into);
  returned = result;
  return true;
}
