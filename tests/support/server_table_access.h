#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "public/manager_state.h"

namespace vtdirect_test {

/// The server table as it is.
inline lxservices::cms_interface::ServerTable TableNow() {
  return *lxservices::cms_interface::TheManagerState().table();
}

/// Puts a server into the table, in the place of whatever has that key; an empty pointer too.
inline void PutServer(const std::string& key, std::shared_ptr<lxservices::cms_interface::FileServer> server,
                      const std::string& nickname = {}) {
  const auto seen = lxservices::cms_interface::TheManagerState().table();
  auto table = *seen;
  if (!nickname.empty()) table.nicknames[nickname] = key;
  table.servers[key] = std::move(server);
  ASSERT_TRUE(lxservices::cms_interface::TheManagerState().ReplaceTable(seen, std::move(table)));
}

}  // namespace vtdirect_test
