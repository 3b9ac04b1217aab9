#include "hosts/mount/fuse/operations.h"

namespace vtdirect_mount {
namespace {

// The kernel is to take small steps: an answer with attributes for each line of a listing would be one
// request to the server each.
void OnInit(void* /*mount*/, fuse_conn_info* connection) {
  connection->want &= ~static_cast<unsigned>(FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
  connection->want |=
      connection->capable &
      static_cast<unsigned>(FUSE_CAP_SPLICE_WRITE | FUSE_CAP_SPLICE_MOVE | FUSE_CAP_PARALLEL_DIROPS);
}

void AddWriting(fuse_lowlevel_ops& operations) {
  operations.create = OnCreate;
  operations.write = OnWrite;
  operations.setattr = OnSetAttributes;
  operations.flush = OnFlush;
  operations.fsync = OnSync;
  operations.rename = OnRename;
  operations.unlink = OnUnlink;
  operations.mkdir = OnMakeDirectory;
  operations.rmdir = OnRemoveDirectory;
  operations.symlink = OnSymbolicLink;
  operations.link = OnLink;
  operations.mknod = OnMakeNode;
  // No extended attributes can be set: without a function for that programs are told that it is not supported,
  // and go on without access lists.
}

}  // namespace

fuse_lowlevel_ops Operations(bool writes) {
  fuse_lowlevel_ops operations = {};
  operations.init = OnInit;
  operations.lookup = OnLookup;
  operations.forget = OnForget;
  operations.forget_multi = OnForgetMulti;
  operations.getattr = OnGetAttributes;
  operations.opendir = OnOpenDirectory;
  operations.readdir = OnReadDirectory;
  operations.releasedir = OnReleaseDirectory;
  operations.open = OnOpen;
  operations.read = OnRead;
  operations.release = OnRelease;
  operations.getxattr = OnGetExtended;
  operations.listxattr = OnListExtended;
  if (writes) AddWriting(operations);
  return operations;
}

}  // namespace vtdirect_mount
