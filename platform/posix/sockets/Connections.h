// What talking to another program over a socket needs of the system besides the socket.
#pragma once

#include <string>

namespace osa::posix {

/// This machine's name on the network; empty when it is not told.
std::string hostName();
/// Both ends find the connection ended, also threads that wait on it now. It stays open.
void endConnection(int descriptor);

}  // namespace osa::posix
