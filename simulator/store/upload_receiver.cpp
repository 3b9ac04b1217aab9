#include "simulator/store/upload_receiver.h"

#include <exception>

namespace vantry_sim {
namespace {

constexpr std::string_view masterUrl = "Master_URL";
constexpr std::string_view descriptors = "CacheDescriptor_array";
constexpr std::size_t longestText = 64 * 1024;

/// The text in front of the next ":", which is cut off with it.
std::string_view TakeField(std::string_view& text) {
  const auto end = text.find(':');
  const std::string_view field = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return field;
}

}  // namespace

UploadReceiver::UploadReceiver(const ContentStore& contents, UploadTicket ticket, std::string_view boundary)
    : contents_(contents), ticket_(std::move(ticket)), reader_(boundary, *this) {}

void UploadReceiver::Receive(std::string_view bytes) {
  if (refusal_) return;
  if (reader_.Feed(bytes) || refusal_) return;
  Refuse(400, "broken-multipart", reader_.problem());
}

Refusal UploadReceiver::Finish() {
  if (refusal_) return refusal_;
  if (!reader_.finished()) Refuse(400, "broken-multipart", "the last boundary is missing");
  if (!refusal_ && !masterUrlSeen_) Refuse(400, "bad-upload", "the part Master_URL is missing");
  if (!refusal_ && described_.empty())
    Refuse(400, "bad-upload", "the part CacheDescriptor_array names no stream");
  return refusal_;
}

bool UploadReceiver::Keep() {
  for (std::size_t i = 0; i < files_.size(); ++i) {
    if (!contents_.Keep(std::move(files_[i]), streams_[i].stream)) return false;
  }
  return contents_.SyncNames();
}

bool UploadReceiver::BeginPart(const PartHead& head) {
  part_ = head.name;
  text_.clear();
  return part_ == masterUrl || part_ == descriptors || BeginFile(head);
}

bool UploadReceiver::BeginFile(const PartHead& head) {
  const auto described = described_.find(head.name);
  if (described == described_.end()) {
    return Refuse(400, "unknown-part", "a part is named by nothing in CacheDescriptor_array in front of it");
  }
  for (const ReceivedStream& received : streams_) {
    if (received.stream == described->second) return Refuse(400, "unknown-part", "a part comes twice");
  }
  try {
    files_.push_back(contents_.Spool());
  } catch (const std::exception&) {
    return Refuse(507, "disk-full", "the server's disk takes no new file");
  }
  streams_.push_back({described->second, 0, head.name});
  return true;
}

bool UploadReceiver::PartBytes(std::string_view bytes) {
  if (part_ != masterUrl && part_ != descriptors) {
    return files_.back().Write(bytes) || Refuse(507, "disk-full", "the server's disk doesn't take the bytes");
  }
  text_.append(bytes);
  return text_.size() <= longestText || Refuse(400, "bad-upload", "a part that isn't a file is too long");
}

bool UploadReceiver::EndPart() {
  if (part_ == masterUrl) return CheckMasterUrl();
  if (part_ == descriptors) return ReadDescriptors();
  streams_.back().size = files_.back().size();
  return files_.back().Finish() || Refuse(507, "disk-full", "the server's disk doesn't take the bytes");
}

bool UploadReceiver::CheckMasterUrl() {
  masterUrlSeen_ = true;
  return text_ == ticket_.masterUrl || Refuse(400, "bad-upload", "Master_URL isn't the one of the ticket");
}

bool UploadReceiver::ReadDescriptors() {
  std::string_view rest = text_;
  while (!rest.empty()) {
    const auto end = rest.find(';');
    if (end == std::string_view::npos)
      return Refuse(400, "bad-upload", "CacheDescriptor_array has no ; at its end");
    std::string_view entry = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    const std::string_view stream = TakeField(entry);
    const std::string name(TakeField(entry));
    const auto known = ticket_.streams.find(name);
    if (known == ticket_.streams.end() || std::to_string(known->second) != stream || entry != stream) {
      return Refuse(400, "bad-upload", "CacheDescriptor_array names what the ticket doesn't");
    }
    described_.insert(*known);
  }
  return true;
}

bool UploadReceiver::Refuse(int status, std::string_view code, std::string_view message) {
  refusal_ = ErrorResponse(status, code, message);
  return false;
}

}  // namespace vantry_sim
