// panelkit tests: another process holding a write lock on a file, as the firmware tool holds its lock.
#include "LockHolder.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace panelkit::test {

LockHolder::LockHolder(const std::string& path)
{
    int ready[2];
    if (::pipe(ready) != 0)
        return;
    const pid_t holder = ::fork();
    if (holder == 0) {
        const int fd = ::open(path.c_str(), O_RDWR | O_CREAT, 0644);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        const char byte = 1;
        if (fd < 0 || ::fcntl(fd, F_SETLK, &lock) != 0 || ::write(ready[1], &byte, 1) != 1)
            ::_exit(1);
        ::pause();
        ::_exit(0);
    }
    ::close(ready[1]);
    char byte = 0;
    const bool locked = holder > 0 && ::read(ready[0], &byte, 1) == 1;
    ::close(ready[0]);
    if (holder > 0 && !locked)
        ::waitpid(holder, nullptr, 0);
    holder_ = locked ? holder : -1;
}

bool LockHolder::holding() const
{
    return holder_ > 0 && ::waitpid(holder_, nullptr, WNOHANG) == 0;
}

LockHolder::~LockHolder()
{
    if (holder_ <= 0)
        return;
    ::kill(holder_, SIGKILL);
    ::waitpid(holder_, nullptr, 0);
}

}  // namespace panelkit::test
