#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/store/content_store.h"
#include "simulator/store/upload_store.h"
#include "simulator/wire/messages.h"
#include "simulator/wire/multipart_reader.h"

namespace vantry_sim {

/// One upload as it comes: its files go straight to the disk.
///
/// The body's parts are `Master_URL`, the text of the ticket; `CacheDescriptor_array`, entries of
/// `STREAM:PART:STREAM;` that say which parts fill which streams; and a part for each file, named by an
/// entry. A file may be missing: its stream then stays empty and gets no receipt.
class UploadReceiver final : private PartSink {
 public:
  UploadReceiver(const ContentStore& contents, UploadTicket ticket, std::string_view boundary);

  /// Reads on. After a problem the bytes are dropped.
  void Receive(std::string_view bytes);

  /// To be called when the body has ended. @return what is wrong with it
  Refusal Finish();

  [[nodiscard]] const UploadTicket& ticket() const { return ticket_; }

  /// What was received, in the order it came, after a Finish without refusal.
  [[nodiscard]] const std::vector<ReceivedStream>& streams() const { return streams_; }

  /// Moves the files to their places in the content store. @return false when the disk refuses
  [[nodiscard]] bool Keep();

 private:
  bool BeginPart(const PartHead& head) override;
  bool PartBytes(std::string_view bytes) override;
  bool EndPart() override;
  bool BeginFile(const PartHead& head);
  bool CheckMasterUrl();
  bool ReadDescriptors();
  bool Refuse(int status, std::string_view code, std::string_view message);

  const ContentStore& contents_;
  UploadTicket ticket_;
  MultipartReader reader_;
  std::optional<Response> refusal_;
  std::string part_;  ///< name of the part that is being read
  std::string text_;  ///< what a part that isn't a file holds
  bool masterUrlSeen_ = false;
  std::map<std::string, std::int64_t> described_;  ///< parts that the body has named
  std::vector<ReceivedStream> streams_;
  std::vector<SpooledFile> files_;  ///< of `streams_`
};

}  // namespace vantry_sim
