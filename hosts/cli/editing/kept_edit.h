#pragma once

#include <string>
#include <vector>

#include "hosts/cli/failures/result.h"

namespace vtdirect_cli {

/// How far an edit has come, for the next run if this one is ended.
enum class EditStage {
  Begun,       ///< whoever has the document checked out, it was not this edit
  CheckedOut,  ///< this edit has checked the document out
  Storing      ///< and has begun to store what was edited
};

/// What an edit keeps for the next run beside its file.
struct EditState {
  EditStage stage = EditStage::Begun;
  std::string workingCopy;  ///< UID of the one that the stage is about; another one has nothing to do with it
  std::string version;      ///< that the file was made from; empty if that is not known
  std::string sum;  ///< of the bytes that it had when the edit had checked it out, SHA-256; may be empty
};

/// Where the file of an edit lies until its bytes are on the server: a directory of the document's own, below
/// $XDG_STATE_HOME/vtdirect/edits or ~/.local/state/vtdirect/edits, for this user alone. It outlives the
/// program, whatever ends that. One run at a time has it.
class KeptEdit {
 public:
  /// Makes the directory and takes it for this run.
  /// @param document  what stays the same when the document gets a new iteration, which has an id of its own
  /// @param name      fit to be a file's
  /// @return a failure if another run edits the document, or there is no place to keep it
  [[nodiscard]] static Result<KeptEdit> Open(const std::string& document, const std::string& name);

  KeptEdit(KeptEdit&& other) noexcept;
  KeptEdit& operator=(KeptEdit&&) = delete;
  ~KeptEdit();

  /// The file to be edited; it need not be there.
  [[nodiscard]] std::string file() const { return directory_ + "/content/" + name_; }
  /// Whether a file is there that holds what the server is not known to have, which goes for what was stored in another
  /// working copy than this as well: its checkout may have been undone.
  /// @param workingCopy  of the document, as it is kept; empty for none
  [[nodiscard]] bool HasUnstored(const std::string& workingCopy) const;
  /// The bytes that the server had, by their SHA-256, when the file was fetched or stored last; empty if that
  /// is not known.
  [[nodiscard]] std::string KnownSum() const;
  /// The version that the file was fetched as; empty if that is not known.
  [[nodiscard]] std::string KnownVersion() const;

  /// A stage of which no working copy is known, as a release before this one kept it, is about none.
  [[nodiscard]] EditState state() const;
  /// @return why the state can't be kept, or an empty text
  [[nodiscard]] std::string Keep(const EditState& state) const;

  /// Where the file is, with what editors put beside it.
  [[nodiscard]] std::string place() const { return directory_ + "/content"; }
  /// What lies beside the file, in order: an editor's backup, swap or recovery file may be all that there is of
  /// what was edited. Each with its size and time, so that one that was written to is another.
  [[nodiscard]] std::vector<std::string> OtherFiles() const;

  /// From now on the server is not known to have what is in the file.
  void CountAsUnstored() const;
  /// Removes the file alone.
  void Drop() const;
  /// Removes the file and all that the program has kept with it: the server has what is in it. Other files stay.
  /// @return whether any does
  bool Remove() const;

 private:
  KeptEdit(std::string directory, std::string name)
      : directory_(std::move(directory)), name_(std::move(name)) {}
  [[nodiscard]] int Lock();

  std::string directory_;
  std::string name_;
  int lock_ = -1;
};

}  // namespace vtdirect_cli
