#include <morvane/platform/standard_error.h>

#include <cerrno>
#include <morvane/platform/posix/signal_guard.h>
#include <poll.h>
#include <unistd.h>

namespace morvane::platform {

void writeStandardError(char const * bytes, std::size_t count) noexcept {
    int const error = errno;
    {
        SignalGuard const guard;
        while (count != 0) {
            ssize_t const written = write(STDERR_FILENO, bytes, count);
            if (written >= 0) {
                bytes += written;
                count -= static_cast<std::size_t>(written);
            } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
                pollfd channel{STDERR_FILENO, POLLOUT, 0};
                if (poll(&channel, 1, -1) < 0 && errno != EINTR) {
                    break;
                }
            } else if (errno != EINTR) {
                break;
            }
        }
    }
    errno = error;
}

} // namespace morvane::platform
