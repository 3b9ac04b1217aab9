#pragma once

#include <string>

namespace vantry_sim {

/// A socket that takes connections.
struct ListeningSocket {
  int socket = -1;  ///< -1: not to be had. Whoever gets it closes it.
  int port = 0;
};

/// Takes an address and a port. @param port 0: any free one
ListeningSocket ListenOn(const std::string& address, int port);

}  // namespace vantry_sim
