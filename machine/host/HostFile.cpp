// Files and folders of this computer, without waiting for what never comes.
#include "machine/host/HostFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

namespace StandIn {

int HostFileRead(const std::string& path, Bytes* content, std::size_t limit) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    return file < 0 ? errno : HostFileRead(file, content, limit);
}

int HostFileRead(int file, Bytes* content, std::size_t limit) {
    struct stat about {};
    if (fstat(file, &about) != 0) {
        return errno;
    }
    content->clear();
    content->reserve(std::min(static_cast<std::size_t>(about.st_size), limit));
    std::uint8_t piece[16384];
    for (;;) {
        const ssize_t got = read(file, piece, sizeof piece);
        if (got == 0) {
            return content->empty() && S_ISFIFO(about.st_mode) ? ENODATA : 0;
        }
        if (got > 0) {
            if (static_cast<std::size_t>(got) > limit - content->size()) {
                return EFBIG;
            }
            content->insert(content->end(), piece, piece + got);
        } else if (errno == EAGAIN) {
            pollfd ready{file, POLLIN, 0};
            poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
}

std::string HostFault(const std::string& path, int error) {
    return path + ": " + std::strerror(error);
}

bool HostFolderExists(const std::string& path) {
    struct stat about {};
    return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode);
}

int HostFolderMake(const std::string& path) {
    for (std::size_t end = 0; end != std::string::npos;) {
        end = path.find('/', end + 1);
        if (mkdir(path.substr(0, end).c_str(), 0777) != 0 && errno != EEXIST) {
            return errno;
        }
    }
    return HostFolderExists(path) ? 0 : ENOTDIR;
}

} // namespace StandIn
