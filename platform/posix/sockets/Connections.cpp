// Host name and the end of connections.
#include "platform/posix/sockets/Connections.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <climits>

#include "platform/posix/SystemCall.h"

namespace osa::posix {

std::string hostName() {
    std::array<char, HOST_NAME_MAX + 1> name{};
    if (systemCall([&] { return gethostname(name.data(), name.size() - 1); }) != 0) return {};
    return name.data();
}

void endConnection(int descriptor) {
    (void)shutdown(descriptor, SHUT_RDWR);
}

}  // namespace osa::posix
