// The backlog of a listening socket of cpp-httplib, which listens with a backlog of 5.
#pragma once

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

namespace zan::restconf {

// cpp-httplib listens with a backlog of 5: connections that come faster than its one thread
// accepts them (64 at once from a load generator, or a burst while that thread waits for a
// processor) are dropped and come again only after the client's SYN timeout, 1 s, then 3 s
// and more. listen(2) again on the listening socket sets the backlog anew.
inline void widen_backlog(int port) {
    DIR* dir = ::opendir("/proc/self/fd");
    if (!dir) return;
    while (const dirent* e = ::readdir(dir)) {
        const int fd = std::atoi(e->d_name);
        if (fd <= STDERR_FILENO) continue;
        int listening = 0;
        socklen_t len = sizeof listening;
        if (::getsockopt(fd, SOL_SOCKET, SO_ACCEPTCONN, &listening, &len) != 0 || !listening) continue;
        sockaddr_storage self{};
        len = sizeof self;
        if (::getsockname(fd, reinterpret_cast<sockaddr*>(&self), &len) != 0) continue;
        const int at = self.ss_family == AF_INET    ? ntohs(reinterpret_cast<const sockaddr_in*>(&self)->sin_port)
                       : self.ss_family == AF_INET6 ? ntohs(reinterpret_cast<const sockaddr_in6*>(&self)->sin6_port)
                                                    : -1;
        if (at == port) ::listen(fd, SOMAXCONN);
    }
    ::closedir(dir);
}

}  // namespace zan::restconf
