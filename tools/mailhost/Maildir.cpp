#include "Maildir.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <utility>

#include "MessageReader.h"

namespace mailhost {

namespace {

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t done = write(file, bytes.data(), bytes.size());
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(done));
  }
  return true;
}

UniqueFd CreateFile(const std::string& path) {
  return UniqueFd(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
}

// The part of a Maildir name that never changes; RFC 1939 allows 70 printable characters in an
// identifier, so a name beyond that is replaced by a number made from it (FNV-1a).
std::string IdOf(const std::string& name) {
  std::string base = name.substr(0, name.find(':'));
  const bool fits = base.size() <= 70 && std::all_of(base.begin(), base.end(),
                                                     [](char c) { return c > ' ' && c <= '~'; });
  if (fits) return base;
  std::uint64_t hash = 14695981039346656037U;
  for (const char c : base) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  return "h" + std::to_string(hash);
}

class MaildirDelivery : public Delivery {
 public:
  MaildirDelivery(UniqueFd file, const std::string& directory, const std::string& name)
      : file_(std::move(file)),
        temporary_(directory + "/tmp/" + name),
        final_(directory + "/new/" + name),
        envelope_(directory + "/envelopes/" + name + ".envelope") {}

  MaildirDelivery(const MaildirDelivery&) = delete;
  MaildirDelivery& operator=(const MaildirDelivery&) = delete;

  ~MaildirDelivery() override {
    if (!committed_) unlink(temporary_.c_str());
  }

  bool Write(std::string_view content) override {
    good_ = good_ && WriteAll(file_.Get(), content);
    return good_;
  }

  // The envelope comes first: who sees the message finds its envelope too.
  bool Commit(const Envelope& envelope) override {
    if (!good_ || !WriteEnvelope(envelope)) return false;
    committed_ = rename(temporary_.c_str(), final_.c_str()) == 0;
    if (!committed_) unlink(envelope_.c_str());
    return committed_;
  }

 private:
  bool WriteEnvelope(const Envelope& envelope) const {
    std::string text =
        "MAIL FROM:<" + envelope.sender.address + ">" + envelope.sender.parameters + "\n";
    for (const EnvelopePath& recipient : envelope.recipients) {
      text += "RCPT TO:<" + recipient.address + ">" + recipient.parameters + "\n";
    }
    const UniqueFd file = CreateFile(envelope_);
    if (!file) return false;
    if (WriteAll(file.Get(), text)) return true;
    unlink(envelope_.c_str());
    return false;
  }

  UniqueFd file_;
  const std::string temporary_;
  const std::string final_;
  const std::string envelope_;
  bool good_ = true;
  bool committed_ = false;
};

}  // namespace

Maildir::Maildir(std::string directory) : directory_(std::move(directory)) {
  for (const char* folder : {"tmp", "new", "cur", "envelopes"}) {
    std::filesystem::create_directories(directory_ + "/" + folder);
  }
}

std::vector<StoredMessage> Maildir::List() {
  std::vector<StoredMessage> messages;
  std::unordered_map<std::string, KnownSize> sizes;
  ListFolder("new", messages, sizes);
  ListFolder("cur", messages, sizes);
  sizes_ = std::move(sizes);
  std::sort(messages.begin(), messages.end(),
            [](const StoredMessage& a, const StoredMessage& b) { return a.name < b.name; });
  return messages;
}

void Maildir::ListFolder(const std::string& folder, std::vector<StoredMessage>& messages,
                         std::unordered_map<std::string, KnownSize>& sizes) const {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory_ + "/" + folder, error)) {
    StoredMessage message;
    message.name = entry.path().filename().string();
    if (message.name.starts_with('.')) continue;
    message.path = folder + "/" + message.name;
    struct stat status {};
    if (stat(entry.path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    message.id = IdOf(message.name);

    const auto fileSize = static_cast<std::uint64_t>(status.st_size);
    const std::int64_t changed = status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
    const auto known = sizes_.find(message.id);
    if (known != sizes_.end() && known->second.fileSize == fileSize &&
        known->second.changed == changed) {
      message.size = known->second.wireSize;
    } else {
      const UniqueFd file = Open(message);
      if (!file) continue;
      message.size = MessageReader::WireSize(file.Get(), fileSize);
    }
    sizes[message.id] = {fileSize, changed, message.size};
    messages.push_back(std::move(message));
  }
}

UniqueFd Maildir::Open(const StoredMessage& message) const {
  return UniqueFd(open((directory_ + "/" + message.path).c_str(), O_RDONLY | O_CLOEXEC));
}

bool Maildir::Remove(const StoredMessage& message) const {
  unlink((directory_ + "/envelopes/" + message.id + ".envelope").c_str());
  return unlink((directory_ + "/" + message.path).c_str()) == 0 || errno == ENOENT;
}

std::unique_ptr<Delivery> Maildir::Begin() {
  const std::string name = NextName();
  UniqueFd file = CreateFile(directory_ + "/tmp/" + name);
  if (!file) return nullptr;
  return std::make_unique<MaildirDelivery>(std::move(file), directory_, name);
}

// Names sort in the order the messages began to arrive, even when the clock is set back.
std::string Maildir::NextName() {
  using std::chrono::microseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  lastTime_ =
      std::max<std::int64_t>(lastTime_, std::chrono::duration_cast<microseconds>(now).count());
  std::array<char, 96> name;
  std::snprintf(name.data(), name.size(), "%010lld.M%06lldQ%08lluP%d.localhost",
                static_cast<long long>(lastTime_ / 1'000'000),
                static_cast<long long>(lastTime_ % 1'000'000),
                static_cast<unsigned long long>(sequence_++), static_cast<int>(getpid()));
  return name.data();
}

}  // namespace mailhost
