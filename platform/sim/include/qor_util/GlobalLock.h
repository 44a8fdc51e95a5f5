// Maker's utility library, simulated: a lock file's name and its open descriptor.
#pragma once

#include <string>
#include <unistd.h>

namespace qor_util {

/// Holds a lock-file descriptor and closes it when it goes out of scope.
class GlobalLock {
public:
    /// A lock on the named file, not yet opened.
    explicit GlobalLock(const std::string& name) : name_(name) {}
    ~GlobalLock()
    {
        if (fd_ >= 0) {
            ::close(fd_);
            fd_ = -1;
        }
    }
    GlobalLock(const GlobalLock&) = delete;
    GlobalLock& operator=(const GlobalLock&) = delete;

    /// The lock file's name.
    const std::string& name() const { return name_; }
    /// The descriptor, -1 when none.
    int fd() const { return fd_; }
    /// Takes ownership of an open descriptor (closing any held before).
    void reset(int fd)
    {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = fd;
    }

private:
    std::string name_;
    int fd_ = -1;
};

}  // namespace qor_util
